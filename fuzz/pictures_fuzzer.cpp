// The bytes of a picture, of whatever format they are.
#include "Fuzzing.h"

#include <luhost/io/PictureDecoders.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto decoders = luhost::io::MakePictureDecoders({2048, std::uint64_t{1} << 20, 20});
    const fuzz::Balance balance;
    const std::string_view bytes = fuzz::AsText(data, size);
    for (const auto& decoder : decoders) {
        if (decoder->Recognises(bytes)) {
            std::string problem;
            const bool isPicture = decoder->Decode(bytes, problem) != nullptr;
            fuzz::Require(isPicture == problem.empty(), "a picture or a reason");
        }
    }
    return 0;
}
