#include "PictureProbe.h"

#include "DocumentSource.h"

#include <luk/Image.h>
#include <luloader/Loader.h>

namespace lusym
{

std::unordered_map<std::string, PictureFacts> ProbePictures(const std::vector<std::string>& paths,
                                                            DocumentSource& source)
{
    std::unordered_map<std::string, PictureFacts> facts;
    std::unordered_map<std::string, du::SmartPtr<luk::Image>> images;
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    for (const std::string& path : paths) {
        const auto [place, isNew] = images.try_emplace(path);
        if (isNew && loader) {
            const InterruptHold hold;
            place->second = du::MakeCounted<luk::Image>();
            place->second->SetURL(du::Symbol("file:///" + path));
            loader->LoadImage(place->second, nullptr, du::Symbol());
        }
    }
    source.WaitForLoads();
    for (const auto& [path, image] : images) {
        PictureFacts& fact = facts[path];
        const du::SmartPtr<luk::ImageData> data = image ? image->GetImageData() : nullptr;
        if (data) {
            fact = {data->GetWidth(), data->GetHeight(), bool(data->GetVectorSource()), {}};
        } else {
            fact.problem = image && !image->GetProblem().empty() ? image->GetProblem() : "it cannot be read";
        }
    }
    return facts;
}

} // namespace lusym
