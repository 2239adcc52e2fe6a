#include "support/Contains.h"
#include "support/Links.h"
#include "support/SessionTest.h"

#include <luk/Kernel.h>
#include <luk/ShapeSource.h>
#include <luloader/Loader.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace test
{

namespace
{

using luk::ImageData;
using luloader::Loader;

/// Takes any text that begins with P for a picture of one row: its bytes, four a pixel.
class TextDecoder : public luloader::ImageDecoder
{
public:
    bool Recognises(std::string_view bytes) const override { return !bytes.empty() && bytes.front() != '?'; }

    du::SmartPtr<ImageData> Decode(std::string_view bytes, std::string& problem) const override
    {
        std::unique_lock lock(m_mutex);
        ++m_begun;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
        if (bytes.front() == 'M') {
            throw std::bad_alloc();
        }
        if (bytes.front() != 'P') {
            problem = bytes.front() == 'C' ? "the file is cut off" : "";
            return nullptr;
        }
        std::vector<ImageData::Frame> frames{{static_cast<int>(bytes.size() / 4), 1, nullptr, 0}};
        frames[0].pixels = std::make_shared<ImageData::Pixels>(bytes.begin(), bytes.end());
        return du::MakeCounted<ImageData>(std::move(frames));
    }

    /// While it is closed, decoding waits.
    void SetOpen(bool isOpen)
    {
        const std::lock_guard lock(m_mutex);
        m_isOpen = isOpen;
        m_changed.notify_all();
    }
    void WaitUntilBegun(int count) const
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_begun >= count; });
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    mutable int m_begun = 0;
    bool m_isOpen = true;
};

/// Takes any file that begins with S for a shape with as many vertices as it has bytes.
class TextReader : public luloader::ShapeReader
{
public:
    du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string& problem) const override
    {
        ++reads;
        const std::string bytes = TemporaryFolder::ReadFile(path);
        if (!bytes.starts_with('S')) {
            problem = bytes.starts_with('C') ? "the file is cut off" : "";
            return nullptr;
        }
        return du::MakeCounted<luk::Mesh>(std::vector<dg::FVec3>(bytes.size()), std::vector<std::uint32_t>(),
                                          std::vector<luk::Mesh::Part>());
    }

    mutable std::atomic<int> reads{0};
};

class LoadEvent : public luk::AsyncEvent
{
public:
    explicit LoadEvent(std::function<void(int)> onCompleted) : m_onCompleted(std::move(onCompleted)) {}
    void OnCompleted(int status) override { m_onCompleted(status); }

private:
    std::function<void(int)> m_onCompleted;
};

class LoaderTest : public SessionTest
{
protected:
    LoaderTest()
    {
        m_config.loader.decoders = {m_decoder};
        m_config.loader.shapeReaders = {m_reader};
        m_config.loader.workers = 4;
        RestartSession();
    }

    du::SmartPtr<luk::Image> Load(const std::string& url, std::function<void(int)> onCompleted = {})
    {
        auto image = du::MakeCounted<luk::Image>();
        image->SetURL(du::Symbol(url));
        const auto count = [this, then = std::move(onCompleted)](int status) {
            ++(status == 0 ? m_loaded : m_failed);
            if (then) {
                then(status);
            }
        };
        Loader::GetLoader()->LoadImage(image, du::MakeCounted<LoadEvent>(count), {});
        return image;
    }

    du::SmartPtr<luk::Shape> LoadShape(const std::string& path, const du::SmartPtr<luk::Anchor>& anchor = nullptr)
    {
        du::SmartPtr<luk::ShapeSource> source;
        luk::ShapeSource::Create(source, path, dg::FBox::EMPTY, 0);
        return LoadShape(luk::Shape::Get(source), anchor);
    }

    du::SmartPtr<luk::Shape> LoadShape(const du::SmartPtr<luk::Shape>& shape,
                                       const du::SmartPtr<luk::Anchor>& anchor = nullptr)
    {
        const auto count = [this](int status) { ++(status == 0 ? m_loaded : m_failed); };
        Loader::GetLoader()->LoadShape(shape, 0, du::MakeCounted<LoadEvent>(count), anchor);
        return shape;
    }

    static bool Wait() { return Loader::GetLoader()->WaitForLoads(); }

    static std::string TextOf(const luk::Image& image)
    {
        if (!image.GetImageData()) {
            return "";
        }
        const ImageData::Pixels& pixels = *image.GetImageData()->GetFrame(0).pixels;
        return {pixels.begin(), pixels.end()};
    }

    std::shared_ptr<TextReader> m_reader = std::make_shared<TextReader>();
    std::shared_ptr<TextDecoder> m_decoder = std::make_shared<TextDecoder>();
    int m_loaded = 0;
    int m_failed = 0;
};

TEST_F(LoaderTest, CompletesFromThePumpAloneWhateverTheUrl)
{
    const std::string path = m_folder.Write("a %20.png", "Pict");
    for (const std::string& url : {path, "file:///" + path, (kHasLinks ? "file://" : "file:///") + path}) {
        const int before = m_loaded;
        const auto image = Load(url);
        m_decoder->WaitUntilBegun(1);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(m_loaded, before) << url;
        EXPECT_TRUE(Wait());
        EXPECT_EQ(m_loaded, before + 1) << url;
        EXPECT_EQ(TextOf(*image), "Pict") << url;
    }
}

TEST_F(LoaderTest, TellsWhyALoadFailed)
{
    m_config.loader.maximumFileBytes = 8;
    RestartSession();
    MakePipe(m_folder.Path("pipe"));
    const std::pair<std::string, const char*> cases[] = {
        {m_folder.Path("missing"), "no such file"},
        {m_folder.Path(), "no regular file"},
        {m_folder.Path("pipe"), kHasLinks ? "no regular file" : "no such file"},
        {kDevice, "no regular file"},
        {m_folder.Write("large", "Pict Pict"), "larger than 8 bytes"},
        {m_folder.Write("empty", ""), "no picture of a known format"},
        {m_folder.Write("unknown", "?"), "no picture of a known format"},
        {m_folder.Write("cut", "Cut"), "the file is cut off"},
        {m_folder.Write("odd", "Odd"), "it is damaged"},
        {m_folder.Write("much", "Much"), "out of memory"},
        {"", "no file of this system"},
        {"https://host/" + m_folder.Write("here", "Pict"), "no file of this system"},
        {m_folder.Path("here") + std::string("\0.png", 5), "no file of this system"},
    };
    for (const auto& [url, reason] : cases) {
        const int before = m_failed;
        const auto image = Load(url);
        image->SetImageData(du::MakeCounted<ImageData>(std::vector<ImageData::Frame>()));
        EXPECT_EQ(m_failed, before) << url;
        EXPECT_TRUE(Wait());
        EXPECT_EQ(m_failed, before + 1) << url;
        EXPECT_TRUE(Contains(image->GetProblem(), reason)) << url;
        EXPECT_FALSE(image->GetImageData()) << url;
    }
}

TEST_F(LoaderTest, DecodesTheSameBytesOnceForAll)
{
    std::vector<std::string> paths;
    for (int n = 0; n < 30; ++n) {
        paths.push_back(m_folder.Write(std::to_string(n) + ".png", "Picture " + std::to_string(n % 10)));
    }
    std::vector<du::SmartPtr<luk::Image>> images;
    for (std::size_t n = 0; n < 600; ++n) {
        images.push_back(Load(paths[n % paths.size()]));
        if (n % 100 == 99) {
            Load(m_folder.Path("missing"));
            luk::Kernel::GetKernel()->ProcessEvents();
        }
    }
    EXPECT_TRUE(Wait());
    EXPECT_EQ(m_loaded, 600);
    EXPECT_EQ(m_failed, 6);
    EXPECT_EQ(Loader::GetLoader()->GetDecodeCount(), 10u);
    for (std::size_t n = 0; n < images.size(); ++n) {
        EXPECT_EQ(TextOf(*images[n]), "Picture " + std::to_string(n % 10));
        EXPECT_EQ(images[n]->GetImageData(), images[n % 10]->GetImageData());
    }
}

TEST_F(LoaderTest, SeesThatAFileHasChanged)
{
    const std::string path = m_folder.Write("a.png", "Pict");
    for (const char* content : {"Pone", "Ptwo", "Pone"}) {
        m_folder.Write("a.png", content);
        const auto image = Load(path);
        EXPECT_TRUE(Wait());
        EXPECT_EQ(TextOf(*image), content) << "the same size, within the same instant";
    }
    m_decoder->SetOpen(false);
    m_folder.Write("a.png", "Pold");
    const auto before = Load(path);
    m_decoder->WaitUntilBegun(3);
    m_folder.Write("a.png", "Pnew");
    const auto after = Load(path);
    m_decoder->SetOpen(true);
    EXPECT_TRUE(Wait());
    EXPECT_EQ(TextOf(*before), "Pold");
    EXPECT_EQ(TextOf(*after), "Pnew") << "asked for while the old file was being decoded";
}

TEST_F(LoaderTest, AnImageShowsWhatItAskedForLast)
{
    m_decoder->SetOpen(false);
    std::string order;
    const auto image = Load(m_folder.Write("slow.png", "Pslow"), [&](int status) { order += std::to_string(status); });
    m_decoder->WaitUntilBegun(1);
    image->SetURL(du::Symbol(m_folder.Path("missing")));
    const auto note = [&](int status) { order += std::to_string(status); };
    Loader::GetLoader()->LoadImage(image, du::MakeCounted<LoadEvent>(note), {});
    while (luk::Kernel::GetKernel()->ProcessEvents() == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(order, "") << "the second one has been read and waits for the first";
    EXPECT_EQ(Loader::GetLoader()->GetPendingCount(), 2u);
    m_decoder->SetOpen(true);
    EXPECT_TRUE(Wait());
    EXPECT_EQ(order, "01");
    EXPECT_EQ(image->GetImageData(), nullptr);
}

TEST_F(LoaderTest, LetsPicturesGoThatNobodyAskedForLately)
{
    m_config.loader.maximumCachedBytes = 5000;
    RestartSession();
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    const auto decodesFor = [&](char name, du::SmartPtr<luk::Image>* kept = nullptr) {
        const std::string path = m_folder.Write(std::string(1, name), 'P' + std::string(999, name));
        std::filesystem::last_write_time(path, longAgo);
        const std::size_t before = Loader::GetLoader()->GetDecodeCount();
        const auto image = Load(path);
        EXPECT_TRUE(Wait());
        if (kept) {
            *kept = image;
        }
        return Loader::GetLoader()->GetDecodeCount() - before;
    };
    du::SmartPtr<luk::Image> kept;
    EXPECT_EQ(decodesFor('a', &kept), 1u);
    EXPECT_EQ(decodesFor('b'), 1u);
    EXPECT_EQ(decodesFor('a'), 0u);
    EXPECT_EQ(decodesFor('c'), 1u);
    EXPECT_EQ(decodesFor('a'), 0u);
    EXPECT_EQ(decodesFor('b'), 1u) << "let go";
    EXPECT_EQ(decodesFor('d'), 1u);
    EXPECT_EQ(decodesFor('e'), 1u);
    EXPECT_EQ(decodesFor('a'), 0u) << "an image still has it";
}

TEST_F(LoaderTest, ReadsTheSameShapeOnceForAll)
{
    const std::string path = m_folder.Write("Symbols/a.ol", "Shape");
    m_folder.Write("Symbols/b.ol", "Shape");
    const auto anchor = du::MakeCounted<luk::Anchor>(du::Symbol(m_folder.Path()));
    std::vector<du::SmartPtr<luk::Shape>> shapes;
    for (int round = 0; round < 2; ++round) {
        for (const std::string& url : {path, "file:///" + path, std::string("a.ol"), std::string("b.ol")}) {
            shapes.push_back(LoadShape(url, anchor));
        }
        const auto picture = Load(m_folder.Write("Symbols/c.ol", "Pict"));
        EXPECT_EQ(m_loaded, 5 * round) << "from the pump alone";
        EXPECT_TRUE(Wait());
        EXPECT_EQ(m_loaded, 5 * round + 5);
    }
    EXPECT_EQ(m_reader->reads, 1);
    for (const auto& shape : shapes) {
        EXPECT_TRUE(shape->GetMesh() && shape->GetMesh() == shapes[0]->GetMesh()) << shape->GetPath();
    }
    m_folder.Write("Symbols/a.ol", "Shap2");
    EXPECT_FALSE(LoadShape(path)->IsLoaded());
    LoadShape(shapes[0]);
    LoadShape(luk::Shape::Get(luk::ShapeSource::CreateFromMesh(shapes[0]->GetMesh())));
    EXPECT_EQ(m_loaded, 10) << "what is loaded already completes from the pump too";
    EXPECT_TRUE(Wait());
    EXPECT_EQ(m_loaded, 13);
    EXPECT_EQ(m_reader->reads, 2);
}

TEST_F(LoaderTest, TellsWhyAShapeFailed)
{
    const auto anchor = du::MakeCounted<luk::Anchor>(du::Symbol(m_folder.Path()));
    m_folder.Write("here", "Shape");
    const std::tuple<std::string, du::SmartPtr<luk::Anchor>, const char*> cases[] = {
        {m_folder.Write("cut", "Cut"), nullptr, "the file is cut off"},
        {m_folder.Write("odd", "Odd"), nullptr, "it is damaged"},
        {m_folder.Path("missing"), nullptr, "no such file"},
        {m_folder.Path(), nullptr, "no regular file"},
        {"", nullptr, "no file of this system"},
        {"..", anchor, "no file of this system"},
        {"here", anchor, "no such file"},
    };
    for (const auto& [path, where, reason] : cases) {
        const int before = m_failed;
        const auto shape = LoadShape(path, where);
        EXPECT_EQ(m_failed, before);
        EXPECT_TRUE(Wait());
        EXPECT_EQ(m_failed, before + 1) << path;
        EXPECT_TRUE(Contains(shape->GetProblem(), reason)) << path;
    }
    LoadShape(du::SmartPtr<luk::Shape>());
    EXPECT_TRUE(Wait());
    EXPECT_EQ(m_failed, 8);
}

TEST_F(LoaderTest, LetsMeshesGoThatNobodyHas)
{
    m_config.loader.maximumCachedBytes = 4000;
    RestartSession();
    const auto readsFor = [&](const std::string& name) {
        const int before = m_reader->reads;
        const auto shape = LoadShape(m_folder.Write(name, 'S' + name + std::string(97, ' ')));
        EXPECT_TRUE(Wait());
        return std::pair(m_reader->reads - before, shape);
    };
    const auto kept = readsFor("a");
    for (const char* name : {"b", "c", "d", "e"}) {
        EXPECT_EQ(readsFor(name).first, 1);
    }
    EXPECT_EQ(readsFor("b").first, 1);
    EXPECT_EQ(readsFor("a").second->GetMesh(), kept.second->GetMesh()) << "somebody still has it";
}

TEST_F(LoaderTest, WaitsForLoadsThatCompletionsAskFor)
{
    int left = 300;
    std::vector<std::string> paths;
    for (int n = 0; n < 7; ++n) {
        paths.push_back(m_folder.Write(std::to_string(n), "Picture " + std::to_string(n)));
    }
    std::function<void(int)> loadNext = [&](int) {
        EXPECT_FALSE(Wait()) << "inside an event";
        if (--left > 0) {
            Load(paths[static_cast<std::size_t>(left) % 7], loadNext);
        } else {
            luk::Kernel::GetKernel()->PostEvent([this, &paths] { Load(paths[0]); });
        }
    };
    Load(paths[0], loadNext);
    EXPECT_TRUE(Wait());
    EXPECT_EQ(m_loaded, 301);
    EXPECT_EQ(Loader::GetLoader()->GetPendingCount(), 0u);

    m_decoder->SetOpen(false);
    Load(m_folder.Write("slow", "Pslow"));
    EXPECT_FALSE(Loader::GetLoader()->WaitForLoads([](std::size_t pending) { return pending != 1; }));
    m_decoder->SetOpen(true);
    EXPECT_TRUE(Wait());
    EXPECT_EQ(m_loaded, 302);
}

TEST_F(LoaderTest, DeliversBurstsToAHostThatOnlyPumps)
{
    const std::string urls[] = {m_folder.Write("a", "Pa"), m_folder.Write("b", "Pb"), m_folder.Write("c", "Pc")};
    const auto giveUpAt = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    int asked = 0;
    for (std::size_t burst = 0; burst < 40; ++burst) {
        for (std::size_t n = 0; n < 30; ++n, ++asked) {
            Load(urls[n % (burst % std::size(urls) + 1)]);
        }
        while (m_loaded < asked && std::chrono::steady_clock::now() < giveUpAt) {
            luk::Kernel::GetKernel()->ProcessEvents();
            std::this_thread::yield();
        }
        ASSERT_EQ(m_loaded, asked) << "a worker sleeps";
        std::this_thread::sleep_for(std::chrono::milliseconds(burst % 8)); // the next one finds them tired or asleep
    }
}

TEST_F(LoaderTest, DropsALongQueueOfOneImageWhenItStops)
{
    constexpr std::size_t kLoads = 60000;
    m_decoder->SetOpen(false);
    const auto image = Load(m_folder.Write("slow.png", "Pslow"));
    m_decoder->WaitUntilBegun(1);
    image->SetURL(du::Symbol(m_folder.Path("missing")));
    for (std::size_t n = 0; n < kLoads; ++n) {
        Loader::GetLoader()->LoadImage(image, nullptr, {});
    }
    while (luk::Kernel::GetKernel()->ProcessEvents() == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(Loader::GetLoader()->GetPendingCount(), kLoads + 1) << "they have been read and wait for the first";
    m_decoder->SetOpen(true);
    Loader::GetLoader()->Stop();
    EXPECT_EQ(m_loaded, 0);
}

TEST_F(LoaderTest, DropsWhatIsLeftWhenItStops)
{
    const auto held = std::make_shared<int>(0);
    const auto loader = Loader::GetLoader();
    for (int n = 0; n < 300; ++n) {
        Load(m_folder.Write(std::to_string(n % 50), "P" + std::to_string(n % 50)), [&, held](int) {
            if (m_loaded == 100) {
                loader->Stop();
                Load(m_folder.Path("0"), [held](int) {});
            }
        });
    }
    EXPECT_FALSE(Wait());
    EXPECT_EQ(m_loaded, 100);
    EXPECT_EQ(loader->GetPendingCount(), 0u);
    EXPECT_EQ(held.use_count(), 1) << "the events are gone";
    luk::Kernel::GetKernel()->ProcessEvents();
    EXPECT_EQ(m_loaded, 100);
}

TEST_F(LoaderTest, EndsInTheMiddleOfADecode)
{
    for (const bool closesKernel : {false, true}) {
        RestartSession();
        m_decoder->SetOpen(false);
        Load(m_folder.Write(closesKernel ? "b" : "a", closesKernel ? "Pb" : "Pa"));
        m_decoder->WaitUntilBegun(closesKernel ? 2 : 1);
        std::thread opener([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            m_decoder->SetOpen(true);
        });
        if (closesKernel) {
            luk::Kernel::GetKernel()->Close();
            EXPECT_FALSE(Wait());
            EXPECT_EQ(Loader::GetLoader()->GetPendingCount(), 0u);
        }
        EndSession();
        opener.join();
    }
    EXPECT_EQ(m_loaded, 0);
}

} // namespace

} // namespace test
