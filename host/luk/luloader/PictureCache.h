#pragma once

#include <du/SmartPtr.h>
#include <du/TextHash.h>
#include <luk/ImageData.h>
#include <luloader/RegularFile.h>

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace luloader
{

/// Decoded pictures, found by the file that they were read from or by the bytes that they were decoded from.
///
/// Ownership: keeps pictures up to a number of bytes; beyond it the one asked for least lately is no longer kept, but is
/// found by its file for as long as somebody else has its pixels.
///
/// Threads: the owner locks.
///
/// Cost: constant for each call; a picture counts with its pixels and its file's bytes.
class PictureCache
{
public:
    struct File {
        std::string path;
        FileIdentity identity;
        bool isSettled = false; ///< otherwise its identity says nothing about its bytes
    };

    struct Content {
        std::size_t digest = 0;
        std::shared_ptr<const std::string> bytes;
    };

    explicit PictureCache(std::size_t maximumBytes) : m_maximumBytes(maximumBytes) {}

    du::SmartPtr<luk::ImageData> FindFile(const File& file);
    /// From now on the picture is found by the file too.
    du::SmartPtr<luk::ImageData> FindContent(const Content& content, const File& file);
    void Add(const Content& content, const File& file, const du::SmartPtr<luk::ImageData>& picture);
    void Clear();

private:
    /// A picture in somebody else's hands: enough to have it again while its pixels are in memory.
    struct Trace {
        struct Frame {
            int width;
            int height;
            std::weak_ptr<const luk::ImageData::Pixels> pixels;
            int delayMilliseconds;
        };
        std::vector<Frame> frames;
        std::weak_ptr<const std::string> vectorSource;
        bool hasVectorSource = false;

        explicit Trace(const luk::ImageData& picture);
        bool IsLost() const;
        du::SmartPtr<luk::ImageData> Find() const;
    };

    struct Picture {
        Trace trace;
        du::SmartPtr<luk::ImageData> data;        ///< null when it is no longer kept
        std::shared_ptr<const std::string> bytes; ///< null when it is no longer kept
        std::size_t digest = 0;
        std::list<std::shared_ptr<Picture>>::iterator place{};
    };

    struct Known {
        FileIdentity identity;
        bool isSettled = false;
        std::shared_ptr<Picture> picture;
    };

    du::SmartPtr<luk::ImageData> Use(const std::shared_ptr<Picture>& picture);
    void Keep(const std::shared_ptr<Picture>& picture, const du::SmartPtr<luk::ImageData>& data);
    void LetGoOf(const std::shared_ptr<Picture>& picture);
    void Know(const File& file, const std::shared_ptr<Picture>& picture);
    static std::size_t CostOf(const Picture& picture);

    std::size_t m_maximumBytes;
    std::size_t m_bytes = 0;
    std::size_t m_sweepAt = 1024;               ///< number of known files at which lost ones are looked for
    std::list<std::shared_ptr<Picture>> m_kept; ///< the latest used first
    std::unordered_multimap<std::size_t, std::shared_ptr<Picture>> m_byDigest;
    std::unordered_map<std::string, Known, du::TextHash, std::equal_to<>> m_byPath;
};

} // namespace luloader
