#include "ExampleCatalog.h"

#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/SymbolTemplateWriter.h"

#include <luhost/io/PictureDecoders.h>
#include <luhost/ProductMeshReader.h>
#include <luk/illustration/SequencerTag.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <stdlib.h>

namespace bench
{

namespace
{

using luk::illustration::SequencerTag;
using lusymbols::PartslibraryCategoryItem;
using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryItem;
using lusymbols::PartslibraryOlItem;

void FillTexts(PartslibraryItem& item, std::size_t number, std::size_t categories)
{
    const std::string serial = std::to_string(number);
    item.SetId("entry-" + serial);
    item.SetCategoryId("category-" + std::to_string(number % categories));
    item.SetName("Bent arrow, " + serial);
    item.SetTitle("Bent arrow to the right, " + serial);
    item.SetDescription("Shows the direction in which the part is pulled out of its seat.");
    item.SetShowTooltipTitle(true);
    if (number % 10 == 0) {
        const auto tag = du::MakeCounted<SequencerTag>();
        tag->SetType(SequencerTag::GetTypeForSymbol(du::Symbol("TORQUE")));
        tag->SetDescription("Tightening torque");
        tag->SetUnits("Nm");
        tag->SetQuantityString("25");
        item.AddSequencerTag(tag);
    }
}

du::SmartPtr<PartslibraryItem> MakeEntry(std::size_t number, std::size_t categories)
{
    const std::string file = "arrow_" + std::to_string(number);
    if (number % 2 == 0) {
        const auto ol = du::MakeCounted<PartslibraryOlItem>();
        FillTexts(*ol, number, categories);
        ol->SetOlTooltip("Arrow");
        ol->SetOlGalleryThumbnailUrl("SymbolsLibrary/Shape/" + file + "_64x64.png");
        ol->SetOlUrl("SymbolsLibrary/Shape/" + file + ".obj");
        ol->SetOlScale(1.5);
        ol->SetOlCsys({dg::FMat33::IDENTITY, {12.5, 0.0, -3.25}});
        ol->SetAxisName("Z");
        return ol;
    }
    const auto image = du::MakeCounted<PartslibraryImageItem>();
    FillTexts(*image, number, categories);
    image->SetImageTooltip("Arrow");
    image->SetImageGalleryThumbnailUrl("SymbolsLibrary/2D/" + file + "_64x64.png");
    image->SetImageUrl("SymbolsLibrary/2D/" + file + ".svg");
    image->SetImageScale(100);
    return image;
}

} // namespace

Catalog MakeCatalog(std::size_t entries, std::size_t categories)
{
    Catalog catalog;
    for (std::size_t i = 0; i < categories; ++i) {
        const auto category = du::MakeCounted<PartslibraryCategoryItem>();
        category->SetId("category-" + std::to_string(i));
        category->SetCatName("Arrows " + std::to_string(i));
        catalog.categories.push_back(category);
    }
    catalog.templates.reserve(entries);
    for (std::size_t i = 0; i < entries; ++i) {
        catalog.templates.push_back(MakeEntry(i, categories));
    }
    return catalog;
}

namespace
{

/// A bitmap of 64 x 64 pixels of 24 bits, different for each seed.
std::string MakeBitmap(std::size_t seed)
{
    constexpr std::uint32_t kSide = 64;
    constexpr std::uint32_t kPixelBytes = kSide * kSide * 3;
    constexpr std::uint32_t kHeaderBytes = 54;
    std::string bytes = "BM";
    const auto put = [&bytes](std::uint32_t value, int count) {
        for (int byte = 0; byte < count; ++byte) {
            bytes += static_cast<char>(value >> (8 * byte));
        }
    };
    for (const std::uint32_t value : {kHeaderBytes + kPixelBytes, 0u, kHeaderBytes, 40u, kSide, kSide}) {
        put(value, 4);
    }
    put(1, 2);
    put(24, 2);
    for (const std::uint32_t value : {0u, kPixelBytes, 2835u, 2835u, 0u, 0u}) {
        put(value, 4);
    }
    for (std::uint32_t byte = 0; byte < kPixelBytes; ++byte) {
        bytes += static_cast<char>(seed >> (byte % 56));
    }
    return bytes;
}

} // namespace

Workplace::Workplace()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "lusymbols-bench-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    luhost::SessionConfig config;
    config.baseFolder = m_folder;
    config.temporaryDirectory = m_folder;
    config.loader.decoders = luhost::io::MakePictureDecoders();
    config.loader.shapeReaders = {std::make_shared<luhost::ProductMeshReader>()};
    m_session = std::make_unique<luhost::Session>(config);
}

Workplace::~Workplace()
{
    m_session.reset();
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

std::string Workplace::LibraryFile(std::size_t entries)
{
    const std::string path = m_folder + "/library-" + std::to_string(entries) + ".xml";
    if (!std::filesystem::exists(path)) {
        Catalog catalog = MakeCatalog(entries, entries / 100);
        lusymbols::SymbolTemplateWriter(false).ToXml(du::Symbol(path), std::move(catalog.templates),
                                                     catalog.categories);
    }
    return path;
}

std::string Workplace::PictureFile(const std::string& name)
{
    const std::filesystem::path path = std::filesystem::path(m_folder) / "Symbols" / name;
    if (!std::filesystem::exists(path)) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << MakeBitmap(std::hash<std::string>()(name));
    }
    return path.string();
}

std::string Workplace::ShapeFile(const std::string& name, std::size_t seed)
{
    const std::filesystem::path path = std::filesystem::path(m_folder) / "Symbols" / name;
    if (!std::filesystem::exists(path)) {
        std::vector<dg::FVec3> corners = {
            {0.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, static_cast<float>(seed)}};
        const luk::Mesh mesh(std::move(corners), {0, 1, 2}, {});
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << luhost::MeshToPly(mesh);
    }
    return path.string();
}

std::string Workplace::DocumentFile(std::size_t symbols) const
{
    return m_folder + "/document-" + std::to_string(symbols) + ".luz";
}

Workplace& GetWorkplace()
{
    static Workplace workplace;
    return workplace;
}

std::size_t FileSize(const std::string& path) { return static_cast<std::size_t>(std::filesystem::file_size(path)); }

std::size_t BytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void GiveFreeMemoryBack() { malloc_trim(0); }

} // namespace bench
