#include <luloader/PictureCache.h>

#include <algorithm>
#include <new>
#include <utility>

namespace luloader
{

PictureCache::Trace::Trace(const luk::ImageData& picture)
    : vectorSource(picture.GetVectorSource()), hasVectorSource(picture.GetVectorSource() != nullptr)
{
    frames.reserve(picture.GetFrameCount());
    for (std::size_t index = 0; index < picture.GetFrameCount(); ++index) {
        const luk::ImageData::Frame& frame = picture.GetFrame(index);
        frames.push_back({frame.width, frame.height, frame.pixels, frame.delayMilliseconds});
    }
}

bool PictureCache::Trace::IsLost() const
{
    return std::any_of(frames.begin(), frames.end(), [](const Frame& frame) { return frame.pixels.expired(); });
}

du::SmartPtr<luk::ImageData> PictureCache::Trace::Find() const
{
    std::vector<luk::ImageData::Frame> found;
    found.reserve(frames.size());
    for (const Frame& frame : frames) {
        auto pixels = frame.pixels.lock();
        if (!pixels) {
            return nullptr;
        }
        found.push_back({frame.width, frame.height, std::move(pixels), frame.delayMilliseconds});
    }
    auto source = vectorSource.lock();
    if (hasVectorSource && !source) {
        return nullptr;
    }
    return du::MakeCounted<luk::ImageData>(std::move(found), std::move(source));
}

du::SmartPtr<luk::ImageData> PictureCache::FindFile(const File& file)
{
    const auto known = m_byPath.find(file.path);
    if (known == m_byPath.end() || !known->second.isSettled || known->second.identity != file.identity) {
        return nullptr;
    }
    return Use(known->second.picture);
}

du::SmartPtr<luk::ImageData> PictureCache::FindContent(const Content& content, const File& file)
{
    const auto [begin, end] = m_byDigest.equal_range(content.digest);
    const auto same =
        std::find_if(begin, end, [&](const auto& entry) { return *entry.second->bytes == *content.bytes; });
    if (same == end) {
        return nullptr;
    }
    const std::shared_ptr<Picture> picture = same->second;
    Know(file, picture);
    return Use(picture);
}

void PictureCache::Add(const Content& content, const File& file, const du::SmartPtr<luk::ImageData>& data)
{
    const auto picture = std::make_shared<Picture>(Picture{Trace(*data), nullptr, content.bytes, content.digest});
    const auto entry = m_byDigest.emplace(content.digest, picture);
    try {
        Know(file, picture);
        Keep(picture, data);
    } catch (const std::bad_alloc&) {
        m_byDigest.erase(entry);
        picture->bytes = nullptr;
        throw;
    }
}

void PictureCache::Clear()
{
    m_byPath.clear();
    m_byDigest.clear();
    m_kept.clear();
    m_bytes = 0;
}

du::SmartPtr<luk::ImageData> PictureCache::Use(const std::shared_ptr<Picture>& picture)
{
    du::SmartPtr<luk::ImageData> data = picture->data;
    if (data) {
        m_kept.splice(m_kept.begin(), m_kept, picture->place);
        return data;
    }
    data = picture->trace.Find();
    if (data) {
        Keep(picture, data);
    }
    return data;
}

void PictureCache::Keep(const std::shared_ptr<Picture>& picture, const du::SmartPtr<luk::ImageData>& data)
{
    m_kept.push_front(picture);
    picture->place = m_kept.begin();
    picture->data = data;
    m_bytes += CostOf(*picture);
    while (m_bytes > m_maximumBytes) {
        LetGoOf(std::shared_ptr<Picture>(m_kept.back()));
    }
}

void PictureCache::LetGoOf(const std::shared_ptr<Picture>& picture)
{
    m_bytes -= CostOf(*picture);
    m_kept.erase(picture->place);
    const auto [begin, end] = m_byDigest.equal_range(picture->digest);
    const auto entry = std::find_if(begin, end, [&](const auto& other) { return other.second == picture; });
    if (entry != end) {
        m_byDigest.erase(entry);
    }
    picture->bytes = nullptr;
    picture->data = nullptr;
}

void PictureCache::Know(const File& file, const std::shared_ptr<Picture>& picture)
{
    m_byPath[file.path] = Known{file.identity, file.isSettled, picture};
    if (m_byPath.size() > m_sweepAt) {
        std::erase_if(m_byPath, [](const auto& entry) {
            const Picture& known = *entry.second.picture;
            return !known.data && known.trace.IsLost();
        });
        m_sweepAt = std::max<std::size_t>(1024, 2 * m_byPath.size());
    }
}

std::size_t PictureCache::CostOf(const Picture& picture)
{
    return picture.data->GetByteCount() + (picture.bytes ? picture.bytes->size() : 0) + sizeof(Picture);
}

} // namespace luloader
