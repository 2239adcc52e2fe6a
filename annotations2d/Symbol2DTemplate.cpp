#include "annotations2d/FileOfUrl.h"
#include "annotations2d/Symbol2D.h"
#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryImageItem.h"

#include <dp/LUTracer.h>
#include <du/FileSpec.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/SequencerTagPtrComparator.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Kernel.h>
#include <luloader/Loader.h>
#include <lumk/Stamp.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace luannotations
{

namespace
{

using luk::illustration::SymbolTemplateCollection;
using lusymbols::PartslibraryImageItem;

constexpr dp::TraceChannel kTemplateChannel{"symbol3d", "symbol2d"};

/// Half a size that is to be taken from a picture still on its way.
constexpr float kSizeNotKnownYet = -0.01F;
/// Half a size that no picture is to change.
constexpr float kNoValidSize = -1.0F;
constexpr float kLastResortHalfSize = 30.0F;

void ManageByKernel(dom::ManagedObject& object)
{
    if (const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel()) {
        kernel->ManageObject(object);
    }
}

/// Whether somebody would tell the end of a load; without, a size would stay unknown for ever.
bool CanLoad() { return luloader::Loader::GetLoader() && luk::Kernel::GetKernel(); }

bool IsPositive(float size) { return size > 0.0F && std::isfinite(size); }

/// Tells a symbol that its entry may have changed.
class Symbol2DTemplateObserver : public luk::illustration::AssociativeObjectObserver
{
public:
    explicit Symbol2DTemplateObserver(Symbol2D* symbol) : AssociativeObjectObserver(0), m_symbol(symbol) {}

    void OnAssociativeObjectChanged(const du::SmartPtr<luk::illustration::AssociativeObject>& object) override
    {
        // A library that was loaded again tells without an object; by the id, since the object may have been replaced.
        if (!m_symbol || (object && object->GetId() != m_symbol->GetTemplateHolder().GetRelatedId())) {
            return;
        }
        // Those who are told of the change may let go of the symbol.
        const du::SmartPtr<Symbol2D> symbol(m_symbol);
        symbol->CheckForTemplateUpdate();
    }

    void OnDetached() override { m_symbol = nullptr; }

    bool Serves(const Symbol2D* symbol) const { return m_symbol == symbol; }

private:
    Symbol2D* m_symbol;
};

/// Brings the end of a template's load to its symbol.
class UpdateStampEvent : public luk::AsyncEvent
{
public:
    using Finish = void (*)(du::SmartPtr<Symbol2D> symbol, std::uint64_t number, const std::string& fileName,
                            float previousWidth, int status, const du::SmartPtr<luk::AsyncEvent>& parent);

    UpdateStampEvent(const du::SmartPtr<Symbol2D>& symbol, std::uint64_t number, const std::string& fileName,
                     float previousWidth, const du::SmartPtr<luk::AsyncEvent>& parent, Finish finish)
        : AsyncEvent(1, 0), m_symbol(symbol), m_number(number), m_fileName(fileName), m_previousWidth(previousWidth),
          m_parent(parent), m_finish(finish)
    {
    }

    du::Symbol GetObjectClass() const override
    {
        static const du::Symbol s_class("luannotations::UpdateStampEvent");
        return s_class;
    }

    void OnCompleted(int status) override
    {
        m_finish(std::exchange(m_symbol, nullptr), m_number, m_fileName, m_previousWidth, status, m_parent);
    }

private:
    du::SmartPtr<Symbol2D> m_symbol;
    std::uint64_t m_number;
    std::string m_fileName;
    float m_previousWidth;
    du::SmartPtr<luk::AsyncEvent> m_parent;
    Finish m_finish;
};

bool SameTags(const Symbol2D::SequencerTags& a, const Symbol2D::SequencerTags& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), luk::illustration::SequencerTagPtrComparator());
}

void CompleteOnce(const du::SmartPtr<luk::AsyncEvent>& event, int status)
{
    if (event && !event->IsComplete()) {
        event->Complete(status);
    }
}

} // namespace

void Symbol2D::AssignTemplate(std::uint64_t index)
{
    if (index == Symbol2DInfo::kNoTemplate) {
        return;
    }
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    const auto item =
        du::DynamicCast<PartslibraryImageItem>(collection ? collection->IndexToAssociativeObject(index) : nullptr);
    m_hasTemplate = item && UpdateAssociativeObject(item);
    if (m_hasTemplate) {
        RegisterTemplateObserver();
        m_info.templateId = item->GetId();
    } else {
        ReleaseTemplate();
    }
}

du::SmartPtr<PartslibraryImageItem> Symbol2D::GetSymbolTemplateById() const
{
    return lusymbols::Partslibrary::GetImageFromCollection(m_info.templateId);
}

bool Symbol2D::UpdateAssociativeObject(const du::SmartPtr<PartslibraryImageItem>& item)
{
    const du::SmartPtr<PartslibraryImageItem> related = item ? item : GetSymbolTemplateById();
    if (!related || !m_templateHolder.UpdateAssociativeObject(related)) {
        return false;
    }
    UnregisterConsumer();
    related->RegisterConsumer(this);
    m_consumedTemplate = related;
    return true;
}

void Symbol2D::UnregisterConsumer()
{
    if (m_consumedTemplate) {
        m_consumedTemplate->UnregisterConsumer(this);
        m_consumedTemplate = nullptr;
    }
}

void Symbol2D::ReleaseTemplate()
{
    UnregisterConsumer();
    m_templateHolder.ReleaseAssociativeObject();
    UnregisterTemplateObserver();
}

bool Symbol2D::ObservesTemplate() const
{
    return m_templateObserver && static_cast<Symbol2DTemplateObserver&>(*m_templateObserver).Serves(this);
}

void Symbol2D::RegisterTemplateObserver()
{
    UnregisterTemplateObserver();
    const auto observer = du::MakeCounted<Symbol2DTemplateObserver>(this);
    ManageByKernel(*observer);
    m_templateObserver = observer;
    if (const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection()) {
        collection->RegisterObserver(m_templateObserver, m_templateHolder.GetRelatedId());
    }
}

void Symbol2D::UnregisterTemplateObserver()
{
    // A copy shares the observer of its original, which goes on observing for that one.
    if (ObservesTemplate()) {
        if (const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection()) {
            collection->UnregisterObserver(m_templateObserver);
        }
        // Also when it was registered with a collection that is gone.
        m_templateObserver->OnDetached();
    }
    m_templateObserver = nullptr;
}

void Symbol2D::BindTemplateAtAttach()
{
    du::SmartPtr<luk::illustration::AssociativeObject> related = m_templateHolder.GetRelatedAssociativeObject();
    const bool isBound = ObservesTemplate() && du::DynamicCast<luk::illustration::SymbolTemplate>(related);
    if (!isBound && UpdateAssociativeObject(nullptr)) {
        RegisterTemplateObserver();
        related = m_templateHolder.GetRelatedAssociativeObject();
    }
    CheckForUpdateOf(related);
}

void Symbol2D::CheckForTemplateUpdate() { CheckForUpdateOf(m_templateHolder.GetRelatedAssociativeObject()); }

void Symbol2D::CheckForUpdateOf(const du::SmartPtr<luk::illustration::AssociativeObject>& related)
{
    const auto item = du::DynamicCast<PartslibraryImageItem>(related);
    if (!item) {
        return;
    }
    bool notify = false;
    bool changed = TakeTextsAndTags(*item, notify);
    if (changed) {
        UpdateStamp2DTexts();
    }
    changed |= StartTemplateLoad(*item);
    if (changed) {
        SetDirty();
    }
    if (notify) {
        NotifySymbolChanged();
    }
}

bool Symbol2D::TakeTextsAndTags(const PartslibraryImageItem& item, bool& notify)
{
    bool changed = false;
    if (m_info.imageName.GetText() != item.GetName()) {
        m_info.imageName = du::Symbol(item.GetName());
        changed = true;
    }
    if (m_info.title.GetText() != item.GetTitle() || m_info.showTooltipTitle != item.ShowTooltipTitle()) {
        SetTitle(item.GetTitle(), item.ShowTooltipTitle());
        changed = true;
        notify = true;
    }
    if (m_info.description.GetText() != item.GetDescription() ||
        m_info.showTooltipDescription != item.ShowTooltipDescription()) {
        SetDescription(item.GetDescription(), item.ShowTooltipDescription());
        changed = true;
    }
    if (!SameTags(m_info.sequencerTags, item.GetSequencerTags())) {
        m_info.sequencerTags = item.GetSequencerTags();
        changed = true;
        notify = true;
    }
    return changed;
}

bool Symbol2D::StartTemplateLoad(const PartslibraryImageItem& item)
{
    const bool isLoading = m_sourceUpdated && m_templateLoad.image;
    const du::Symbol& newest = isLoading ? m_templateLoad.fileName : m_info.imageFileName;
    if (NamesFile(item.GetImageUrl(), newest.GetText())) {
        return false;
    }
    const std::string fileName = du::FileSpec(item.GetImageUrl()).GetFile();
    if (fileName.empty() || fileName == newest.GetText() || !CanLoad()) {
        return false;
    }
    std::string source = item.GetImageUrl();
    lusymbols::Partslibrary::CheckRelativeUrlAndConcatIfNeeded(source);
    du::Symbol path;
    if (!lusymbols::Partslibrary::EmbedSymbol(du::Symbol(source), path, false) || path.IsEmpty()) {
        return false;
    }
    if (!isLoading) {
        m_templateLoad.width = m_info.width;
        m_templateLoad.height = m_info.height;
        m_templateLoad.image = m_info.image;
    }
    m_templateLoad.fileName = du::Symbol(fileName);
    ++m_templateLoad.number;
    m_info.image = new luk::Image;
    m_info.image->SetURL(du::Symbol("file:///" + path.GetText()));
    m_info.width = kSizeNotKnownYet;
    m_info.height = kSizeNotKnownYet;
    m_sourceUpdated = true;

    const auto event =
        du::MakeCounted<UpdateStampEvent>(du::SmartPtr<Symbol2D>(this), m_templateLoad.number, fileName,
                                          m_templateLoad.width, m_pendingEvent, &Symbol2D::FinishTemplateLoad);
    ManageByKernel(*event);
    LoadImage(event.get());
    return true;
}

void Symbol2D::FinishTemplateLoad(du::SmartPtr<Symbol2D> symbol, std::uint64_t number, const std::string& fileName,
                                  float previousWidth, int status, const du::SmartPtr<luk::AsyncEvent>& parent)
{
    du::SmartPtr<luk::AsyncEvent> waiting;
    bool parentWaitsOn = false;
    TemplateLoad& load = symbol->m_templateLoad;
    // A load that a newer one has replaced, or a record has made pointless, changes nothing.
    if (load.number == number) {
        waiting = std::exchange(load.waiting, nullptr);
        if (const TemplateLoad before = load; before.image) {
            load.image = nullptr;
            if (status == 0) {
                symbol->CompleteUpdateStamp(fileName, previousWidth);
            } else {
                dp::LUTracer(kTemplateChannel)
                    .Trace(dp::LUTracer::WARNING, "UpdateStampEvent failed to complete successfully\n");
                parentWaitsOn = symbol->RestoreBeforeTemplateLoad(before, parent);
            }
            symbol->m_sourceUpdated = false;
        }
    }
    symbol = nullptr;
    if (!parentWaitsOn) {
        CompleteOnce(parent, status);
    }
    if (!(parentWaitsOn && waiting == parent)) {
        CompleteOnce(waiting, status);
    }
}

/// @return whether the picture from before has to be loaded first, and the parent waits for that
bool Symbol2D::RestoreBeforeTemplateLoad(const TemplateLoad& before, const du::SmartPtr<luk::AsyncEvent>& parent)
{
    m_info.image = before.image;
    SetMarkupSize(0, {before.width, before.height, 0.0F});
    UpdateStamp2DPicture(m_info.image);
    SetStampImage();
    // A symbol whose first picture was to be the template's has never loaded its own.
    if (!m_scene || m_info.image->GetImageData() || m_info.image->GetURL().IsEmpty() || !CanLoad()) {
        return false;
    }
    LoadImage(parent.get());
    return true;
}

void Symbol2D::AbandonTemplateLoad()
{
    if (m_templateLoad.image) {
        m_templateLoad.image = nullptr;
        m_sourceUpdated = false;
    }
}

void Symbol2D::CompleteUpdateStamp(const std::string& fileName, float previousWidth)
{
    m_info.imageFileName = du::Symbol(fileName);
    UpdateStamp2DPicture(m_info.image);
    if (m_info.width != kNoValidSize && m_info.height != kNoValidSize) {
        float width = previousWidth;
        if (!(std::isfinite(width) && width >= 0.0F)) {
            width = IsPositive(m_info.width)  ? m_info.width
                    : IsPositive(m_origWidth) ? m_origWidth
                                              : kLastResortHalfSize;
        }
        const float height = width * GetHeightPerWidth();
        SetMarkupSize(0, {width, std::isfinite(height) ? height : width, 0.0F});
    }
    if (m_markup) {
        m_markup->UpdateShadow();
    }
}

float Symbol2D::GetHeightPerWidth() const
{
    if (IsPositive(m_info.width) && IsPositive(m_info.height)) {
        return m_info.height / m_info.width;
    }
    const int pixelWidth = GetImageWidth();
    const int pixelHeight = GetImageHeight();
    return pixelWidth > 0 && pixelHeight > 0 ? static_cast<float>(pixelHeight) / static_cast<float>(pixelWidth) : 1.0F;
}

} // namespace luannotations
