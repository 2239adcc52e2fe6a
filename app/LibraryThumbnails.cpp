#include "LibraryThumbnails.h"

#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "FileText.h"
#include "Interrupt.h"
#include "LibraryUrl.h"
#include "ParallelWork.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "RealPath.h"
#include "xml/LibraryFormat.h"

#include <dg/FormatNumber.h>
#include <du/FileSpec.h>
#include <luhost/AtomicFile.h>
#include <luhost/io/PictureDecoders.h>
#include <luhost/io/ProductImport.h>

#include <algorithm>
#include <new>
#include <system_error>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryOlItem;
using State = ThumbnailFile::State;

/// What is drawn otherwise than before makes old thumbnails outdated.
constexpr std::string_view kDrawingVersion = "1";
/// Names beginning alike that are tried for one thumbnail.
constexpr int kMostNames = 100'000;

std::string DialogPathOf(std::string galleryPath)
{
    PartslibraryOlItem::ComputeThumbnailUrl(galleryPath, "64x64", "192x192");
    return galleryPath;
}

/// The files of an entry whose gallery shows this one.
std::vector<ThumbnailFile> FilesOf(const std::string& gallery)
{
    const std::string dialog = DialogPathOf(gallery);
    std::vector<ThumbnailFile> files;
    if (dialog != gallery) {
        files.push_back({gallery, kThumbnailSides[0], {}});
    }
    files.push_back({dialog, kThumbnailSides[1], {}});
    return files;
}

bool IsNone(const std::string& url) { return url.empty() || url.ends_with('/'); }

PictureLook LookOf(const PartslibraryImageItem& item)
{
    constexpr std::int64_t kQuarterTurnDegrees = 90;
    const std::int64_t degrees = std::int64_t{item.GetRotateRight()} + item.GetRotateLeft();
    return {static_cast<int>(degrees / kQuarterTurnDegrees % 4), item.GetFlipHorizontal(), item.GetFlipVertical()};
}

ShapeLook LookOf(const PartslibraryOlItem& item)
{
    bool isOrthographic = false;
    double value = 0.0;
    dg::Location location;
    if (!item.GetCameraData(isOrthographic, value, location)) {
        return {};
    }
    dg::Camera3D camera;
    if (isOrthographic) {
        camera.SetOrthographic(value);
    } else {
        camera.SetPerspective(value);
    }
    camera.SetLocation(location);
    return {camera};
}

std::string TextOf(const EntryThumbnails& entry)
{
    std::string text(kDrawingVersion);
    const auto add = [&text](double number) { dg::AppendShortest(text += ' ', number); };
    if (!entry.isShape) {
        add(((entry.pictureLook.quarterTurns % 4) + 4) % 4);
        add(entry.pictureLook.isFlippedHorizontally ? 1.0 : 0.0);
        add(entry.pictureLook.isFlippedVertically ? 1.0 : 0.0);
    } else if (const auto& camera = entry.shapeLook.camera) {
        add(camera->IsOrthographic() ? camera->GetOrthographicWidth() : -camera->GetPerspectiveHFOV());
        const dg::Location& location = camera->GetLocation();
        for (int axis = 0; axis < 3; ++axis) {
            for (int column = 0; column < 3; ++column) {
                add(static_cast<double>(location.GetMat().Get(axis, column)));
            }
            add(location.GetPosition().Get(axis));
        }
    } else {
        text += entry.shapeLook.up == luhost::render::UpAxis::Y ? " y" : " z";
    }
    return text += '\n';
}

/// Reads what the source and the thumbnails are; no more of the entry is looked at.
void Examine(EntryThumbnails& entry)
{
    for (ThumbnailFile& file : entry.files) {
        file.found = FindThumbnail(file.path);
    }
    const auto isForeign = [](const ThumbnailFile& file) { return file.found.kind == FoundThumbnail::Kind::Foreign; };
    ContentHash hash;
    hash.Add(TextOf(entry));
    std::string error;
    const auto take = [&hash](std::string_view bytes) {
        hash.Add(bytes);
        return true;
    };
    if (IsNone(entry.source)) {
        entry.problem = std::string("the entry names no ") + (entry.isShape ? "shape" : "picture");
    } else if (!ReadFileBlocks(entry.source, take, error)) {
        entry.problem = Printable(entry.source) + " " + Printable(error);
    }
    if (!entry.files.empty() && std::ranges::all_of(entry.files, isForeign)) {
        // Nothing is made of it.
        entry.problem.clear();
    }
    entry.shown = hash.Get();
}

/// By its name.
bool IsPng(const std::string& path)
{
    std::string extension = du::FileSpec(path).GetFileExtension();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension == "png";
}

fs::path FolderOf(const LibraryPlace& place)
{
    const fs::path folder = RealPath(fs::path(place.root) / lusymbols::format::kLibraryFolder);
    std::error_code error;
    return fs::is_directory(folder, error) ? folder : RealPath(place.root);
}

} // namespace

bool EntryThumbnails::IsToBeMade() const
{
    return problem.empty() && std::ranges::any_of(files, &ThumbnailFile::IsToBeMade);
}

bool EntryThumbnails::HasAll() const
{
    return std::ranges::all_of(
        files, [](const ThumbnailFile& file) { return file.isMade || file.state == ThumbnailFile::State::Current; });
}

LibraryThumbnails::LibraryThumbnails(const LibraryReading& reading, luhost::render::UpAxis up, bool isForced)
    : m_place(reading.place), m_folder(FolderOf(reading.place)), m_isForced(isForced)
{
    for (const auto& each : reading.examination.templates) {
        EntryThumbnails entry;
        if (const auto shape = du::DynamicCast<PartslibraryOlItem>(each)) {
            entry.item = shape;
            entry.isShape = true;
            entry.source = shape->GetOlUrl();
            entry.oldUrl = shape->GetOlGalleryThumbnailUrl();
            entry.shapeLook = LookOf(*shape);
            entry.shapeLook.up = up;
        } else if (const auto image = du::DynamicCast<PartslibraryImageItem>(each)) {
            entry.item = image;
            entry.source = image->GetImageUrl();
            entry.oldUrl = image->GetImageGalleryThumbnailUrl();
            entry.pictureLook = LookOf(*image);
        } else {
            continue;
        }
        entry.namesNone = IsNone(entry.oldUrl);
        if (!entry.namesNone) {
            entry.files = FilesOf(entry.oldUrl);
        }
        m_sources.insert(entry.source);
        m_entries.push_back(std::move(entry));
    }
    WorkInParallel(
        m_entries.size(), [this](std::size_t i) { Examine(m_entries[i]); }, [](std::size_t) {});
    // What is named already comes before what a name is looked for.
    for (EntryThumbnails& entry : m_entries) {
        if (!entry.files.empty()) {
            Judge(entry);
        }
    }
    for (EntryThumbnails& entry : m_entries) {
        if (entry.files.empty() && entry.problem.empty()) {
            NameFiles(entry);
        }
    }
}

std::string LibraryThumbnails::NameOf(const std::string& path) const
{
    const std::string start = m_place.root + "/";
    return path.starts_with(start) ? path.substr(start.size()) : path;
}

void LibraryThumbnails::Judge(EntryThumbnails& entry)
{
    for (ThumbnailFile& file : entry.files) {
        if (entry.problem.empty()) {
            JudgeFile(entry, file);
        }
    }
}

void LibraryThumbnails::JudgeFile(EntryThumbnails& entry, ThumbnailFile& file)
{
    using Kind = FoundThumbnail::Kind;
    if (m_sources.count(file.path) != 0 || (file.found.kind == Kind::Foreign && !(m_isForced && IsPng(file.path)))) {
        return;
    }
    const std::string name = Printable(NameOf(file.path));
    const auto [claim, isNew] = m_shown.try_emplace(file.path, entry.shown);
    if (claim->second != entry.shown) {
        entry.problem = "its thumbnail " + name + " is that of another entry";
        return;
    }
    file.state = file.found.kind == Kind::Nothing                 ? State::Missing
                 : m_isForced || file.found.kind == Kind::Foreign ? State::Changed
                 : file.found.shown == entry.shown                ? State::Current
                                                                  : State::Changed;
    // Entries that look alike share a file, which is made once.
    file.state = isNew || file.state == State::Current ? file.state : State::Current;
    if (!file.IsToBeMade()) {
        return;
    }
    if (!IsPng(file.path)) {
        entry.problem = "its thumbnail " + name + " would be no PNG file";
    } else if (const std::string fault = FaultOfPlace(file.path); !fault.empty()) {
        entry.problem = "its thumbnail " + name + " " + fault;
    }
}

void LibraryThumbnails::NameFiles(EntryThumbnails& entry)
{
    const std::string url = WrittenUrl(entry.source, entry.isShape, m_place.origin, false);
    const std::string start = url.substr(0, std::max(url.rfind('.'), url.rfind('/') + 1));
    int& number = m_nextNumbers[start];
    while (++number <= kMostNames) {
        const std::string suffix = number == 1 ? std::string() : std::string("-").append(std::to_string(number));
        entry.newUrl = start + suffix + "_64x64.png";
        entry.files = FilesOf(m_place.root + "/" + entry.newUrl);
        for (ThumbnailFile& file : entry.files) {
            file.found = FindThumbnail(file.path);
        }
        if (std::ranges::all_of(entry.files, [&](const auto& file) { return IsFree(file, entry.shown); })) {
            Judge(entry);
            return;
        }
    }
    entry.problem = "no name is free for its thumbnails";
}

bool LibraryThumbnails::IsFree(const ThumbnailFile& file, std::uint64_t shown) const
{
    using Kind = FoundThumbnail::Kind;
    return m_sources.count(file.path) == 0 && m_shown.count(file.path) == 0 &&
           (file.found.kind == Kind::Nothing || (file.found.kind == Kind::Marked && file.found.shown == shown));
}

std::string LibraryThumbnails::FaultOfPlace(const std::string& path)
{
    std::error_code error;
    const fs::path target(path);
    const auto [folder, isNew] = m_isInside.try_emplace(target.parent_path().string(), false);
    if (isNew) {
        folder->second = IsInside(fs::weakly_canonical(target.parent_path(), error), m_folder);
    }
    const bool isLink = fs::is_symlink(fs::symlink_status(target, error));
    if (!folder->second || (isLink && !IsInside(RealPath(path), m_folder))) {
        return "would lie outside the library's folder " + Printable(m_folder.string());
    }
    return {};
}

ThumbnailMaker::ThumbnailMaker()
    : m_decoders(luhost::io::MakePictureDecoders({}, luhost::io::VectorPictures::AsTheyAre)),
      m_reader(std::make_unique<luhost::io::ModelReader>(FindImporter()))
{
}

ThumbnailMaker::~ThumbnailMaker() = default;

std::vector<std::string> ThumbnailMaker::Draw(EntryThumbnails& entry) const
{
    const auto drawAll = [&entry](const auto& thumbnails) {
        std::vector<std::string> pngs;
        for (const ThumbnailFile& file : entry.files) {
            ThumbnailPicture picture = file.IsToBeMade() ? thumbnails.Draw(file.side) : ThumbnailPicture();
            if (!picture.problem.empty()) {
                entry.problem = Printable(entry.source) + " cannot be shown: " + Printable(picture.problem);
                return std::vector<std::string>();
            }
            entry.remark = picture.remark.empty() ? entry.remark : picture.remark;
            pngs.push_back(picture.png.empty() ? std::string() : AddThumbnailMark(std::move(picture.png), entry.shown));
        }
        return pngs;
    };
    try {
        if (entry.isShape) {
            return drawAll(ShapeThumbnails(entry.source, entry.shapeLook, *m_reader));
        }
        std::string bytes;
        std::string error;
        if (ReadFileText(entry.source, bytes, error)) {
            return drawAll(PictureThumbnails(bytes, entry.pictureLook, m_decoders));
        }
        entry.problem = Printable(entry.source) + " " + Printable(error);
    } catch (const std::bad_alloc&) {
        entry.problem = Printable(entry.source) + " cannot be shown: out of memory";
    }
    return {};
}

void ThumbnailMaker::Write(EntryThumbnails& entry, const std::vector<std::string>& pngs)
{
    for (std::size_t i = 0; i < pngs.size() && entry.problem.empty(); ++i) {
        if (pngs[i].empty()) {
            continue;
        }
        ThumbnailFile& target = entry.files[i];
        std::error_code ignored;
        fs::create_directories(fs::path(target.path).parent_path(), ignored);
        // A signal waits, so that no temporary file is left.
        const InterruptHold hold;
        luhost::AtomicFile file(target.path, luhost::AtomicFile::Durability::Cached);
        target.isMade = file.Write(pngs[i]) && file.Commit();
        if (!target.isMade) {
            entry.problem = "its thumbnail cannot be written: " + Printable(file.GetError());
        }
    }
}

} // namespace lusym
