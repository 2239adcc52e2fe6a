#include <luhost/io/GifDecoder.h>
#include <luhost/io/PictureParts.h>

#include <algorithm>
#include <cstring>
#include <gif_lib.h>

namespace luhost::io
{

namespace
{

/// Reads a file frame by frame, painting each over what the frames before have left.
class Reading
{
public:
    Reading(std::string_view bytes, const PictureLimits& limits) : m_bytes(bytes), m_limits(limits), m_budget(limits) {}
    ~Reading()
    {
        if (m_gif) {
            DGifCloseFile(m_gif, nullptr);
        }
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    bool ReadAll();
    Frames& GetFrames() { return m_frames; }
    std::string GetProblem(std::string_view other) const;

    std::string problem;

private:
    struct Area {
        std::size_t left, top, width, height;
    };

    static int OnRead(GifFileType* gif, GifByteType* target, int count);
    bool Open();
    bool ReadExtension();
    bool ReadImage();
    bool PaintImage(const Area& area);
    void PaintRow(const Area& area, std::size_t row, const std::vector<GifPixelType>& indices,
                  const ColorMapObject& map);
    void Dispose(const Area& area, const Pixels& before);

    std::string_view m_bytes;
    std::size_t m_position = 0;
    bool m_isCutOff = false;
    PictureLimits m_limits;
    PictureBudget m_budget;
    GifFileType* m_gif = nullptr;
    GraphicsControlBlock m_control{DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
    std::size_t m_width = 0;
    std::size_t m_height = 0;
    Pixels m_screen;
    Frames m_frames;
};

int Reading::OnRead(GifFileType* gif, GifByteType* target, int count)
{
    Reading& self = *static_cast<Reading*>(gif->UserData);
    const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
    const std::size_t size = std::min(wanted, self.m_bytes.size() - self.m_position);
    self.m_isCutOff = self.m_isCutOff || size < wanted;
    std::memcpy(target, self.m_bytes.data() + self.m_position, size);
    self.m_position += size;
    return static_cast<int>(size);
}

std::string Reading::GetProblem(std::string_view other) const
{
    if (!problem.empty()) {
        return problem;
    }
    return m_isCutOff ? std::string(kCutOff) : Damage(other);
}

bool Reading::Open()
{
    m_gif = DGifOpen(this, OnRead, nullptr);
    if (!m_gif) {
        return false;
    }
    m_width = static_cast<std::size_t>(std::max(m_gif->SWidth, 0));
    m_height = static_cast<std::size_t>(std::max(m_gif->SHeight, 0));
    if (!PictureBudget(m_limits).Take(m_width, m_height, problem)) {
        return false;
    }
    m_screen = MakePixels(m_width, m_height);
    return true;
}

bool Reading::ReadAll()
{
    if (!Open()) {
        return false;
    }
    const auto maximumFrames = static_cast<std::size_t>(std::max(m_limits.maximumFrames, 1));
    while (m_frames.size() < maximumFrames) {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(m_gif, &record) == GIF_ERROR) {
            return false;
        }
        if (record == TERMINATE_RECORD_TYPE) {
            break;
        }
        if (!(record == IMAGE_DESC_RECORD_TYPE ? ReadImage() : ReadExtension())) {
            return false;
        }
    }
    return !m_frames.empty();
}

bool Reading::ReadExtension()
{
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(m_gif, &code, &block) == GIF_ERROR) {
        return false;
    }
    if (code == GRAPHICS_EXT_FUNC_CODE && block) {
        DGifExtensionToGCB(block[0], block + 1, &m_control);
    }
    while (block) {
        if (DGifGetExtensionNext(m_gif, &block) == GIF_ERROR) {
            return false;
        }
    }
    return true;
}

bool Reading::ReadImage()
{
    if (DGifGetImageDesc(m_gif) == GIF_ERROR) {
        return false;
    }
    const auto size = [](int number) { return static_cast<std::size_t>(std::max(number, 0)); };
    const Area area{size(m_gif->Image.Left), size(m_gif->Image.Top), size(m_gif->Image.Width),
                    size(m_gif->Image.Height)};
    if (!m_budget.Take(std::max(area.width, m_width), std::max(area.height, m_height), problem)) {
        return false;
    }
    const Pixels before = m_control.DisposalMode == DISPOSE_PREVIOUS ? m_screen : Pixels();
    if (!PaintImage(area)) {
        return false;
    }
    m_frames.push_back(MakeFrame(m_width, m_height, m_screen, std::max(m_control.DelayTime, 0) * 10));
    Dispose(area, before);
    m_control = {DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
    return true;
}

bool Reading::PaintImage(const Area& area)
{
    const ColorMapObject* const map = m_gif->Image.ColorMap ? m_gif->Image.ColorMap : m_gif->SColorMap;
    if (!map) {
        problem = "it has no colour table";
        return false;
    }
    constexpr std::size_t kInterlace[4][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr std::size_t kPlain[1][2] = {{0, 1}};
    const auto* const first = m_gif->Image.Interlace ? std::begin(kInterlace) : std::begin(kPlain);
    const auto* const last = m_gif->Image.Interlace ? std::end(kInterlace) : std::end(kPlain);
    std::vector<GifPixelType> indices(area.width);
    for (const auto* pass = first; pass != last; ++pass) {
        for (std::size_t row = (*pass)[0]; row < area.height; row += (*pass)[1]) {
            if (DGifGetLine(m_gif, indices.data(), static_cast<int>(area.width)) == GIF_ERROR) {
                return false;
            }
            PaintRow(area, row, indices, *map);
        }
    }
    return true;
}

void Reading::PaintRow(const Area& area, std::size_t row, const std::vector<GifPixelType>& indices,
                       const ColorMapObject& map)
{
    const std::size_t y = area.top + row;
    for (std::size_t x = area.left; y < m_height && x < std::min(area.left + area.width, m_width); ++x) {
        const int index = indices[x - area.left];
        if (index == m_control.TransparentColor || index >= map.ColorCount) {
            continue;
        }
        const GifColorType& colour = map.Colors[index];
        const std::uint8_t pixel[4] = {colour.Red, colour.Green, colour.Blue, 255};
        std::memcpy(&m_screen[(y * m_width + x) * 4], pixel, 4);
    }
}

void Reading::Dispose(const Area& area, const Pixels& before)
{
    if (m_control.DisposalMode == DISPOSE_PREVIOUS) {
        m_screen = before;
    }
    if (m_control.DisposalMode != DISPOSE_BACKGROUND || area.left >= m_width) {
        return;
    }
    const std::size_t width = std::min(area.width, m_width - area.left);
    for (std::size_t y = area.top; y < std::min(area.top + area.height, m_height); ++y) {
        std::memset(m_screen.data() + (y * m_width + area.left) * 4, 0, width * 4);
    }
}

} // namespace

bool GifDecoder::Recognises(std::string_view bytes) const
{
    return bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a");
}

du::SmartPtr<luk::ImageData> GifDecoder::Decode(std::string_view bytes, std::string& problem) const
{
    Reading reading(bytes, m_limits);
    if (!reading.ReadAll()) {
        problem = reading.GetProblem(reading.GetFrames().empty() ? "it holds no picture" : "a frame cannot be read");
        return nullptr;
    }
    return MakePicture(std::move(reading.GetFrames()));
}

} // namespace luhost::io
