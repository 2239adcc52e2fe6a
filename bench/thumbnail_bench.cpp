#include <benchmark/benchmark.h>

#include <cairo.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <librsvg/rsvg.h>
#include <memory>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

std::string MakeSvg(std::size_t number)
{
    const std::string a = std::to_string(number % 17 + 3);
    const std::string b = std::to_string(number % 90);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"96\" height=\"96\"><g transform=\"rotate(" + b +
           " 48 48)\"><path d=\"M10 40h40v-18l36 26-36 26v-18H10z\" fill=\"#f26a1b\" stroke=\"#1f2a33\" "
           "stroke-width=\"3\"/>"
           "<circle cx=\"30\" cy=\"48\" r=\"" +
           a + "\" fill=\"#fff\" stroke=\"#1f2a33\"/></g><!-- " + std::to_string(number) + " --></svg>\n";
}

std::string MakeEntry(std::size_t number)
{
    const std::string n = std::to_string(number);
    return "    <symbol id=\"s" + n + "\" categoryId=\"c\" billboard=\"true\">\n      <name>Symbol " + n +
           "</name>\n      <gallery_thumbnail url=\"SymbolsLibrary/2D/s" + n +
           "_64x64.png\"/> \n      <image url=\"SymbolsLibrary/2D/s" + n + ".svg\"/> \n    </symbol>\n";
}

/// A library of pictures that are vectors, all different, in a temporary folder.
class Library
{
public:
    explicit Library(std::size_t entries) : m_entries(entries)
    {
        std::string pattern = (fs::temp_directory_path() / "lusymbols-bench-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        fs::create_directories(m_folder / "SymbolsLibrary/2D");
        std::ofstream text(GetPath());
        text << "<drellin-library>\n  <units>mm</units>\n  <information></information>\n  <categories>\n"
                "    <category id=\"c\"><name>C</name></category>\n  </categories>\n  <shapes>\n  </shapes>\n  "
                "<symbols>\n";
        for (std::size_t i = 0; i < entries; ++i) {
            std::ofstream(SourceOf(i)) << MakeSvg(i);
            text << MakeEntry(i);
        }
        text << "  </symbols>\n</drellin-library>\n";
    }
    ~Library()
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    fs::path GetPath() const { return m_folder / "SymbolsLibrary/PartSymbolLibrary.xml"; }
    fs::path SourceOf(std::size_t i) const
    {
        return m_folder / "SymbolsLibrary/2D" / ("s" + std::to_string(i) + ".svg");
    }

    /// As people do it, the start of the program included. @return whether all of them are there
    bool MakeThumbnails() const
    {
        const std::string command = std::string(LUSYM_PROGRAM " library thumbnails ")
                                        .append(GetPath().string())
                                        .append(" >/dev/null 2>/dev/null");
        return std::system(command.c_str()) == 0 && fs::exists(ThumbnailOf(m_entries - 1));
    }

private:
    fs::path ThumbnailOf(std::size_t i) const
    {
        return m_folder / "SymbolsLibrary/2D" / ("s" + std::to_string(i) + "_64x64.png");
    }

    std::size_t m_entries;
    fs::path m_folder;
};

std::size_t Count(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

void MakeThumbnails(benchmark::State& state)
{
    // A new folder each time: file systems are slow to give out again what has just been deleted.
    std::vector<std::unique_ptr<Library>> libraries;
    for (auto _ : state) {
        state.PauseTiming();
        libraries.push_back(std::make_unique<Library>(Count(state)));
        state.ResumeTiming();
        if (!libraries.back()->MakeThumbnails()) {
            state.SkipWithError("there are no thumbnails");
            break;
        }
    }
}
BENCHMARK(MakeThumbnails)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

void MakeThumbnailsAgain(benchmark::State& state)
{
    const Library library(Count(state));
    library.MakeThumbnails();
    for (auto _ : state) {
        if (!library.MakeThumbnails()) {
            state.SkipWithError("there are no thumbnails");
            break;
        }
    }
}
BENCHMARK(MakeThumbnailsAgain)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

cairo_status_t CountBytes(void* sum, const unsigned char*, unsigned int length)
{
    *static_cast<std::size_t*>(sum) += length;
    return CAIRO_STATUS_SUCCESS;
}

std::size_t DrawBare(const std::string& svg, int side)
{
    RsvgHandle* const handle =
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(svg.data()), svg.size(), nullptr);
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
    cairo_t* const context = cairo_create(surface);
    const RsvgRectangle viewport{0.0, 0.0, 1.0 * side, 1.0 * side};
    rsvg_handle_render_document(handle, context, &viewport, nullptr);
    std::size_t bytes = 0;
    cairo_surface_write_to_png_stream(surface, CountBytes, &bytes);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    g_object_unref(handle);
    return bytes;
}

/// The same pictures in both sizes by the libraries alone, in one thread and without files.
void MakeThumbnailsReferenceLibrsvg(benchmark::State& state)
{
    for (auto _ : state) {
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < Count(state); ++i) {
            for (const int side : {64, 192}) {
                bytes += DrawBare(MakeSvg(i), side);
            }
        }
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(MakeThumbnailsReferenceLibrsvg)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
