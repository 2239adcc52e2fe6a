#include "annotations2d/Symbol2D.h"
#include "catalog/FileNames.h"

#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <luk/Anchor.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/RunningMode.h>
#include <luk/Image.h>
#include <luk/ImageData.h>
#include <luk/Kernel.h>
#include <luk/MultiRootContainer.h>
#include <luk/Scene.h>
#include <luk/Structure.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <luloader/Loader.h>
#include <lumk/Stamp.h>

#include <string_view>
#include <utility>

namespace luannotations
{

namespace
{

void TurnPicture(luk::Image& image, int rightDegrees, int leftDegrees)
{
    constexpr int kQuarterTurnDegrees = 90;
    if (const du::SmartPtr<luk::ImageData> data = image.GetImageData()) {
        const std::int64_t degrees = std::int64_t{rightDegrees} + leftDegrees;
        image.SetImageData(data->CreateCWRotated(static_cast<int>(degrees / kQuarterTurnDegrees)));
    }
}

/// Brings a loaded picture to its symbol.
class StampLoaderEvent : public luk::AsyncEvent
{
public:
    StampLoaderEvent(const du::SmartPtr<Symbol2D>& symbol, const du::SmartPtr<luk::Image>& image,
                     luk::AsyncEvent* parent, bool onStamp)
        : m_symbol(symbol), m_image(image), m_parent(parent), m_onStamp(onStamp)
    {
    }

    du::Symbol GetObjectClass() const override
    {
        static const du::Symbol s_class("luannotations::StampLoaderEvent");
        return s_class;
    }

    void OnProgress() override {}

    void OnCompleted(int status) override
    {
        Deliver(status);
        // Whoever waits may do anything to the symbol; nothing of it is used from here on.
        m_symbol = nullptr;
        m_image = nullptr;
        if (m_parent && !m_parent->IsComplete()) {
            m_parent->Complete(status);
        }
    }

private:
    void Deliver(int status)
    {
        // Each load gives the picture as the file has it. One that another has replaced is turned too: should that other
        // one fail, this one is shown again.
        if (status == 0) {
            TurnPicture(*m_image, m_symbol->GetRotateRight(), m_symbol->GetRotateLeft());
        }
        if (m_symbol->GetImage() == m_image) {
            m_symbol->SetStampImage();
            m_symbol->OnImageLoaded(m_image, m_onStamp);
        }
        m_symbol->DeleteTempDir();
    }

    du::SmartPtr<Symbol2D> m_symbol;
    du::SmartPtr<luk::Image> m_image;
    du::SmartPtr<luk::AsyncEvent> m_parent;
    bool m_onStamp;
};

} // namespace

void Symbol2D::Initialise() { LoadImage(m_pendingEvent.get()); }

void Symbol2D::LoadImage(luk::AsyncEvent* parent)
{
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    if (!loader) {
        return;
    }
    const auto event = du::MakeCounted<StampLoaderEvent>(du::SmartPtr<Symbol2D>(this), m_info.image, parent, true);
    if (const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel()) {
        kernel->ManageObject(*event);
    }
    loader->LoadImage(m_info.image, event, du::Symbol());
}

void Symbol2D::OnImageLoaded(du::SmartPtr<luk::Image> image, bool onStamp)
{
    if (!onStamp) {
        SetImageRotation(m_info.rotateRight, m_info.rotateLeft);
        SetStampImage();
    }
    if (m_stamp2D) {
        UpdateStamp2DPicture(image);
        UpdateStamp2DExtents();
    } else {
        TakeNaturalSize();
        ShowStamp();
    }
    m_pendingEvent = nullptr;
    PostObservableEvent(EVENT_MEASUREMENT_DISPLAYED);
}

void Symbol2D::TakeNaturalSize()
{
    if (!m_info.image->GetImageData()) {
        return;
    }
    // A document that was saved while a template's picture was loading carries a size that is not known yet.
    const bool sizeUnknown = m_info.width < 0.0F && m_info.height < 0.0F;
    const bool naturalUnknown = !(m_origWidth > 0.0F && m_origHeight > 0.0F);
    if (!CreatedFromFile() || m_sourceUpdated || (sizeUnknown && naturalUnknown)) {
        m_origWidth = static_cast<float>(GetImageWidth()) * 0.5F;
        m_origHeight = static_cast<float>(GetImageHeight()) * 0.5F;
    }
    if (sizeUnknown) {
        SetMarkupSizeAsImage();
    }
}

void Symbol2D::ShowStamp()
{
    m_info.transparency = 0.0F;
    if (!m_markup) {
        return;
    }
    m_markup->SetTransparency(m_info.transparency);
    // The symbol may have been detached while its picture was loading.
    if (!m_scene) {
        return;
    }
    m_markup->SetController(this);
    if (CreatedFromFile()) {
        m_scene->AddAnnotationMarkup(m_markup);
    } else {
        m_scene->AddMarkup(m_markup);
    }
    luk::Annotation::AttachScene(m_scene);
}

void Symbol2D::SetImageRotation(int rightDegrees, int leftDegrees)
{
    TurnPicture(*m_info.image, rightDegrees, leftDegrees);
}

void Symbol2D::SetStampImage()
{
    if (m_markup) {
        m_markup->SetImage(m_info.image->GetImageData());
        m_markup->SetVisibility(IsVisible());
    }
}

void Symbol2D::HideAnnotation() { UpdateStampVisibility(); }

void Symbol2D::ShowAnnotation() { UpdateStampVisibility(); }

void Symbol2D::UpdateStampVisibility()
{
    // A stamp that is not shown yet takes the visibility with its picture; a copy leaves the stamp to its original.
    if (m_markup && m_markup->GetController() == this) {
        m_markup->SetVisibility(IsVisible());
        SetDirty();
    }
}

int Symbol2D::GetImageWidth() const
{
    const du::SmartPtr<luk::ImageData>& data = m_info.image->GetImageData();
    return data ? data->GetWidth() : -1;
}

int Symbol2D::GetImageHeight() const
{
    const du::SmartPtr<luk::ImageData>& data = m_info.image->GetImageData();
    return data ? data->GetHeight() : -1;
}

bool Symbol2D::GetImageFromTempDir(du::Symbol& url) const
{
    const std::string& fileName = m_info.imageFileName.GetText();
    if (!lusymbols::IsPlainFileName(fileName)) {
        return false;
    }
    if (!luk::illustration::IsRunningIllustrate()) {
        return ExtractSymbolsFromLuzFile(url, m_info.imageFileName);
    }
    const auto application = lukapp::illustration::DrellinApp::GetDrellinApp();
    du::Symbol folder;
    if (!application || !application->GetTemporaryDirectory(folder) || folder.IsEmpty()) {
        return false;
    }
    constexpr std::string_view kScheme = "file:///";
    constexpr std::string_view kFolder = "Symbols";
    std::string path;
    path.reserve(kScheme.size() + folder.GetText().size() + kFolder.size() + fileName.size() + 2);
    path.append(folder.GetText()).append(1, du::FileSpec::DIR_SEP_CHAR).append(kFolder);
    path.append(1, du::FileSpec::DIR_SEP_CHAR).append(fileName);
    if (!du::FileSystem::FileExists(path)) {
        return false;
    }
    url = du::Symbol(path.insert(0, kScheme));
    return true;
}

bool Symbol2D::ExtractSymbolsFromLuzFile(du::Symbol& url, const du::Symbol& fileName)
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const du::SmartPtr<luk::MultiRootContainer> container = world ? world->GetContainer() : nullptr;
    const du::SmartPtr<luk::Structure> structure = container ? container->GetPrimaryStructure() : nullptr;
    if (const du::SmartPtr<luk::Anchor> anchor = structure ? structure->GetAnchor() : nullptr) {
        anchor->GetURLForFileSource(fileName, url, true);
    }
    return true;
}

void Symbol2D::DeleteTempDir()
{
    if (!m_tempDir.empty()) {
        du::FileSystem::DeletePath(std::exchange(m_tempDir, std::string()));
    }
}

} // namespace luannotations
