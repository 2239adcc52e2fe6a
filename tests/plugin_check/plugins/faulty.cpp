#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "catalog/PartslibraryOlItem.h"
#include "xml/SymbolTemplateLoader.h"

#include <dp/LUTracer.h>
#include <dp/WriteLockGuard.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Kernel.h>
#include <luk/Scene.h>
#include <luk/SerializedContentElement.h>
#include <luk/ShapeInstance.h>
#include <lukapp/illustration/DrellinApp.h>
#include <luloader/Loader.h>
#include <lumk/Stamp.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cfenv>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <locale>
#include <memory>
#include <pthread.h>
#include <thread>
#include <unistd.h>
#include <vector>

/// The plug-in with one fault, which the environment names by the check that has to find it. Without one it is the plug-in.
namespace
{

using luk::SerializedContentElement;
using luk::illustration::SymbolTemplateCollection;

bool IsFault(std::string_view name)
{
    static const char* const s_fault = std::getenv("LUSYM_FAULT");
    return s_fault && name == s_fault;
}

bool IsCommaLocale() { return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() == ','; }

/// Tells nobody anything, but of a symbol that has left its scene.
class Extra : public luk::illustration::AssociativeObjectObserver
{
public:
    Extra() : AssociativeObjectObserver(0) {}
    void OnAssociativeObjectChanged(const du::SmartPtr<luk::illustration::AssociativeObject>&) override
    {
        if (m_isLeft) {
            std::abort();
        }
    }
    void Leave() { m_isLeft = true; }

private:
    bool m_isLeft = false;
};

/// Completes another event under a lock.
class LockedEvent : public luk::AsyncEvent
{
public:
    LockedEvent(luk::Annotation& annotation, du::SmartPtr<luk::AsyncEvent> event)
        : m_annotation(&annotation), m_event(std::move(event))
    {
    }
    void OnCompleted(int status) override
    {
        const dp::WriteLockGuard lock(m_annotation->GetLock());
        m_event->Complete(status);
    }

private:
    du::SmartPtr<luk::Annotation> m_annotation;
    du::SmartPtr<luk::AsyncEvent> m_event;
};

SerializedContentElement::Property* Find(SerializedContentElement& element, const std::string& key)
{
    auto& properties = element.GetProperties();
    const auto found = std::ranges::find_if(properties, [&](const auto& each) { return each.key.GetText() == key; });
    return found == properties.end() ? nullptr : &*found;
}

std::string TextAt(const SerializedContentElement& element, const std::string& key)
{
    auto* const property = Find(const_cast<SerializedContentElement&>(element), key);
    auto* const text = property ? std::get_if<du::Symbol>(&property->value) : nullptr;
    return text ? text->GetText() : std::string();
}

void Swap(SerializedContentElement& element, const char* first, const char* second)
{
    auto* const a = Find(element, first);
    auto* const b = Find(element, second);
    if (a && b) {
        std::swap(*a, *b);
    }
}

/// What is wrong with what is saved.
void Spoil(SerializedContentElement& saved)
{
    const std::string type = saved.GetName().GetText();
    auto& properties = saved.GetProperties();
    if (IsFault("keys-symbol2d") && TextAt(saved, "title") == "Hot surface") {
        Swap(saved, "anchor", "reverse");
    } else if (IsFault("keys-symbol3d") && type == "symbol3d") {
        Swap(saved, "locPosition", "locOrientation");
    } else if (IsFault("keys-symbol3dflattened") && type == "symbol3dflattened") {
        Swap(saved, "name", "fileName");
    } else if (IsFault("conditional-keys") && Find(saved, "templateIndex")) {
        std::rotate(properties.rbegin(), properties.rbegin() + 1, properties.rend());
    } else if (IsFault("content-locale") && IsCommaLocale()) {
        Find(saved, "title")->value = du::Symbol("1,5");
    } else if (IsFault("unknown-kept")) {
        std::erase_if(properties, [](const auto& property) { return property.key.GetText().starts_with("check"); });
    } else if (IsFault("follows-entry") && TextAt(saved, "title") == "Followed title") {
        Find(saved, "title")->value = du::Symbol("A title");
    } else if (IsFault("content-round-trip")) {
        for (auto& property : properties) {
            auto* const number = std::get_if<float>(&property.value);
            if (number && std::isnan(*number)) {
                *number = 0.0F;
            }
        }
    }
}

/// What goes wrong where a symbol is copied, which everything that lives a whole life does.
void SpoilProcess()
{
    if (IsFault("memory-returns")) {
        static std::vector<std::unique_ptr<char[]>> s_kept;
        s_kept.push_back(std::make_unique<char[]>(4096));
    } else if (IsFault("process-locale")) {
        std::setlocale(LC_ALL, "C.UTF-8");
    } else if (IsFault("process-floating-point")) {
        std::fesetround(FE_DOWNWARD);
    } else if (IsFault("process-folder")) {
        std::filesystem::current_path("/");
    } else if (IsFault("process-environment")) {
        ::setenv("LUSYM_TOUCHED", "1", 1);
    } else if (IsFault("process-signals")) {
        std::signal(SIGUSR1, SIG_IGN);
    } else if (IsFault("observers-removed") && SymbolTemplateCollection::GetCollection()) {
        SymbolTemplateCollection::GetCollection()->RegisterObserver(du::MakeCounted<Extra>());
    }
}

template <class Base>
class Faulty : public Base
{
public:
    bool IsZoomable() const override { return !IsFault("fixed-answers") && Base::IsZoomable(); }

    void Visit(SerializedContentElement& element) override
    {
        const std::size_t before = element.GetChildCount();
        Base::Visit(element);
        if (element.GetChildCount() > before) {
            Spoil(element.GetChild(before));
        }
    }

    bool Flatten(SerializedContentElement& element, const luk::Annotation::FlattenMatrices& matrices,
                 const luk::InstanceCheck& check, const dg::Pipeline& pipeline) override
    {
        return Base::Flatten(element, matrices, check, pipeline) && !IsFault("keys-flattened-drawing");
    }

    du::SmartPtr<luk::Annotation> Clone() override
    {
        SpoilProcess();
        if (IsFault("owner-tags")) {
            this->AddReference(this);
            this->RemoveReference(nullptr);
        }
        return Base::Clone();
    }

    du::SmartPtr<luk::ShapeInstance> GetShapeInstance() override
    {
        auto shape = Base::GetShapeInstance();
        if (shape && IsFault("getter-counts")) {
            shape->AddReference(nullptr);
        }
        return shape;
    }

    std::string GetObjectDescription() const override
    {
        if (IsFault("counts-storm") && std::this_thread::get_id() != m_thread) {
            this->AddReference(nullptr);
        }
        return IsFault("read-lock") ? "a symbol" : Base::GetObjectDescription();
    }

    bool InitializeFromSerializedContent(const SerializedContentElement* element) override
    {
        SerializedContentElement content = *element;
        m_file = TextAt(content, "fileName") + TextAt(content, "imageFileName");
        const auto* const width = Find(content, "width");
        const auto* const turn = Find(content, "rotateRight");
        if (IsFault("content-truncated") && !Find(content, "pageNum") && !Find(content, "ID")) {
            std::abort();
        }
        if (IsFault("content-older") && turn && std::holds_alternative<bool>(turn->value)) {
            content.GetProperties().erase(content.GetProperties().begin() + (turn - content.GetProperties().data()));
        }
        const bool isOdd = width && !std::holds_alternative<float>(width->value);
        return Base::InitializeFromSerializedContent(&content) && !(isOdd && IsFault("content-wrong-types"));
    }

    void SetEvent(du::SmartPtr<luk::AsyncEvent> event) override
    {
        m_event = event;
        if (IsFault("no-lock-held")) {
            event = du::MakeCounted<LockedEvent>(*this, event);
        }
        Base::SetEvent(event);
    }

    bool AttachScene(const du::SmartPtr<luk::Scene>& scene) override
    {
        const bool isRepeated = scene && this->GetScene() == scene;
        if (IsFault("write-lock") && isRepeated) {
            return true;
        }
        if (IsFault("without-locks")) {
            static_cast<void>(this->GetLock()->CountWaiting());
        }
        if (IsFault("unreadable-files")) {
            du::Symbol folder;
            lukapp::illustration::DrellinApp::GetDrellinApp()->GetTemporaryDirectory(folder);
            std::ifstream(folder.GetText() + "/Symbols/" + m_file).get();
        }
        s_lastAttached = this;
        const bool result = Base::AttachScene(scene);
        Enter(scene, isRepeated);
        return result;
    }

    bool DetachScene() override
    {
        if (IsFault("subject-gone")) {
            static_cast<void>(SymbolTemplateCollection::GetCollection()->GetObserverCount());
        }
        const auto loader = luloader::Loader::GetLoader();
        if (IsFault("release-while-loading") && loader && loader->GetPendingCount() > 0) {
            this->AddReference(nullptr);
        }
        if (m_extraMarkup && this->GetScene()) {
            this->GetScene()->RemoveMarkup(std::exchange(m_extraMarkup, nullptr));
        }
        Leave();
        const bool isLast = this == s_lastAttached;
        return Base::DetachScene() && (isLast || !IsFault("attach-orders"));
    }

private:
    void Enter(const du::SmartPtr<luk::Scene>& scene, bool isRepeated)
    {
        if (IsFault("attach-again") && isRepeated) {
            m_extraMarkup = du::MakeCounted<lumk::Stamp>(false, 1, false, 1);
            scene->AddMarkup(m_extraMarkup);
        }
        if (m_event && IsFault("one-terminal-event") && (m_file == "one.pic" || m_file == "one.shp")) {
            m_event->Complete(0);
        }
        if ((IsFault("observers-once") && isRepeated) || (IsFault("observers-remove-inside") && !m_extra)) {
            m_extra = du::MakeCounted<Extra>();
            SymbolTemplateCollection::GetCollection()->RegisterObserver(m_extra);
        }
    }

    /// Without the observer, but not at once.
    void Leave()
    {
        const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
        if (m_extra && kernel) {
            m_extra->Leave();
            kernel->PostEvent([extra = std::exchange(m_extra, nullptr)] {
                SymbolTemplateCollection::GetCollection()->UnregisterObserver(extra.get());
            });
        }
    }

    static inline const void* s_lastAttached = nullptr;
    std::thread::id m_thread = std::this_thread::get_id();
    std::string m_file;
    du::SmartPtr<luk::AsyncEvent> m_event;
    du::SmartPtr<Extra> m_extra;
    du::SmartPtr<luk::Markup> m_extraMarkup;
};

/// From where no annotation comes.
class OutsidePool : public Faulty<luannotations::SymbolAnnotation>
{
public:
    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void operator delete(void* block) { ::operator delete(block); }
};

class FaultyLoader : public lusymbols::SymbolTemplateLoader
{
public:
    using Templates = std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>;
    using Categories = std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>;

    du::SmartPtr<luk::illustration::CollectionInformation> GetCollectionInformation() override
    {
        auto information = lusymbols::SymbolTemplateLoader::GetCollectionInformation();
        if (IsFault("library-read")) {
            du::DynamicCast<luk::illustration::SymbolCollectionInformation>(information)->SetUnits("inch");
        }
        return information;
    }

    bool GetTemplateList(const du::Symbol& file, Templates& out) override
    {
        const std::string& text = file.GetText();
        if (IsFault("library-truncated") && text.find("<drellin-library>") != std::string::npos &&
            text.find("</drellin-library>") == std::string::npos) {
            std::abort();
        }
        const bool result = lusymbols::SymbolTemplateLoader::GetTemplateList(file, out);
        for (const auto& entry : out) {
            const auto shape = du::DynamicCast<lusymbols::PartslibraryOlItem>(entry);
            if (shape && IsFault("library-round-trip")) {
                shape->SetOlScale(shape->GetOlScale() * 2.0);
            }
        }
        if (IsFault("library-locale") && IsCommaLocale()) {
            out.pop_back();
        }
        std::error_code error;
        return result && !(IsFault("library-unreadable") && std::filesystem::is_directory(text, error));
    }

    void GetCategoryList(Categories& out) override
    {
        lusymbols::SymbolTemplateLoader::GetCategoryList(out);
        if (IsFault("library-twice") && out.size() > 2) {
            out.resize(2);
        }
    }
};

class Padding
{
public:
    virtual ~Padding() = default;
    int padding = 0;
};

class ShiftedLoader : public Padding, public lusymbols::SymbolTemplateLoader
{
};

du::RefCounted* Make(const std::string& action, const std::string& category, const std::string& type)
{
    if (action == "load" && category == "template" && type == "symbol") {
        dp::LUTracer({"lusymbols", "root"}).Trace(dp::LUTracer::INFORMATION, "Create new template loader\n");
        return IsFault("base-classes") ? static_cast<du::RefCounted*>(new ShiftedLoader) : new FaultyLoader;
    }
    if (action != "create" || category != "annotation") {
        return nullptr;
    }
    if (type == "symbol2d" || (IsFault("near-misses") && type == "Symbol2d")) {
        return new Faulty<luannotations::Symbol2D>;
    }
    if (type == "symbol3d" && IsFault("allocation")) {
        return new OutsidePool;
    }
    if (type == "symbol3d") {
        return new Faulty<luannotations::SymbolAnnotation>;
    }
    return type == "symbol3dflattened" ? new Faulty<luannotations::SymbolAnnotationFlattened> : nullptr;
}

const std::thread::id s_thread = std::this_thread::get_id();
std::thread s_worker;
std::atomic<bool> s_isOver{false};
int s_terminations = 0;

/// Loads this library once more. @return its handle
void* LoadAgain(int flags)
{
    Dl_info self{};
    ::dladdr(reinterpret_cast<void*>(&LoadAgain), &self);
    return ::dlopen(self.dli_fname, RTLD_NOW | flags);
}

} // namespace

extern "C" LUHOST_API void LUDllInit()
{
    if (IsFault("bind-local")) {
        ::dlclose(LoadAgain(RTLD_GLOBAL));
    } else if (IsFault("load-unload")) {
        ::dlclose(LoadAgain(RTLD_NODELETE));
    } else if (IsFault("thread-while-loaded")) {
        s_worker = std::thread([] {
            while (!s_isOver) {
                std::this_thread::yield();
            }
        });
    } else if (IsFault("no-thread-left")) {
        // Runs in the system's library alone, since this one may be unloaded at any time.
        pthread_t thread{};
        ::pthread_create(&thread, nullptr, reinterpret_cast<void* (*)(void*)>(::dlsym(RTLD_DEFAULT, "pause")), nullptr);
    }
}

extern "C" LUHOST_API void LUDllTerminate()
{
    ++s_terminations;
    s_isOver = true;
    if (s_worker.joinable()) {
        s_worker.join();
    }
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    if (IsFault("no-file-left")) {
        static_cast<void>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    } else if (IsFault("unload-safety") && kernel) {
        kernel->PostEvent([] { ++s_terminations; });
    }
}

extern "C" LUHOST_API bool LUDllCreateComponent(const std::string& action, const std::string& category,
                                                const std::string& type, du::SmartPtr<du::RefCounted>& slot)
{
    if ((IsFault("create-on-threads") && std::this_thread::get_id() != s_thread) ||
        (IsFault("init-terminate-repeated") && s_terminations > 1)) {
        return false;
    }
    du::RefCounted* const made = Make(action, category, type);
    if (!made) {
        return false;
    }
    if (slot && IsFault("slot-replaced")) {
        slot->AddReference(nullptr);
    }
    if (IsFault("trace-lines") && type == "symbol2d") {
        dp::LUTracer({"lusymbols", "root"}).Trace(dp::LUTracer::INFORMATION, "made\n");
    }
    slot = made;
    return !(IsFault("requests") && type == "symbol3dflattened");
}
