#include "annotations2d/FileOfUrl.h"
#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationEvents.h"
#include "catalog/Partslibrary.h"
#include "catalog/PartslibraryOlItem.h"

#include <dg/FBox.h>
#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <lug/Appearance.h>
#include <luk/ComponentNode.h>
#include <luk/illustration/SequencerTagPtrComparator.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Instance.h>
#include <luk/Kernel.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeScene.h>
#include <luk/ShapeSource.h>
#include <luk/World.h>
#include <luloader/Loader.h>
#include <luloader/ShapeLoaderEvent.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace luannotations
{

namespace
{

using luk::illustration::SymbolTemplateCollection;

du::SmartPtr<luk::Anchor> DocumentAnchor()
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const du::SmartPtr<luk::MultiRootContainer> container = world ? world->GetContainer() : nullptr;
    const du::SmartPtr<luk::Structure> structure = container ? container->GetPrimaryStructure() : nullptr;
    return structure ? structure->GetAnchor() : nullptr;
}

bool TakeWhenDifferent(du::Symbol& own, const std::string& theirs)
{
    if (own.GetText() == theirs) {
        return false;
    }
    own = du::Symbol(theirs);
    return true;
}

} // namespace

void SymbolAnnotation::AssignTemplate(std::uint64_t index)
{
    if (index == std::numeric_limits<std::uint64_t>::max()) {
        return;
    }
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    const auto item = du::DynamicCast<lusymbols::PartslibraryOlItem>(
        collection ? collection->IndexToAssociativeObject(index)
                   : du::SmartPtr<luk::illustration::AssociativeObject>());
    m_hasTemplate = item && UpdateAssociativeObject(item);
    if (m_hasTemplate) {
        RegisterTemplateObserver();
        m_templateId = item->GetId();
    } else {
        ReleaseTemplate();
    }
}

bool SymbolAnnotation::UpdateAssociativeObject(const du::SmartPtr<lusymbols::PartslibraryOlItem>& item)
{
    const du::SmartPtr<lusymbols::PartslibraryOlItem> bound =
        item ? item : lusymbols::Partslibrary::GetOlFromCollection(m_templateId);
    if (!bound || !m_templateHolder.UpdateAssociativeObject(bound)) {
        return false;
    }
    UnregisterConsumer();
    bound->RegisterConsumer(this);
    m_consumedTemplate = bound;
    return true;
}

void SymbolAnnotation::RegisterTemplateObserver()
{
    UnregisterTemplateObserver();
    m_templateObserver = du::MakeCounted<SymbolTemplateObserver>(*this);
    if (const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel()) {
        kernel->ManageObject(*m_templateObserver);
    }
    if (const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection()) {
        collection->RegisterObserver(m_templateObserver, m_templateHolder.GetRelatedId());
    }
}

void SymbolAnnotation::UnregisterTemplateObserver()
{
    const du::SmartPtr<SymbolTemplateObserver> observer = std::exchange(m_templateObserver, nullptr);
    if (!observer) {
        return;
    }
    observer->OnDetached(); // also when its collection is no longer the current one
    if (const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection()) {
        collection->UnregisterObserver(observer);
    }
}

/// At the very entry, which may have left the collection since.
void SymbolAnnotation::UnregisterConsumer()
{
    if (const auto consumed = std::exchange(m_consumedTemplate, nullptr)) {
        consumed->UnregisterConsumer(this);
    }
}

void SymbolAnnotation::ReleaseTemplate()
{
    UnregisterTemplateObserver();
    UnregisterConsumer();
    m_templateHolder.ReleaseAssociativeObject();
}

void SymbolAnnotation::BindTemplateAtAttach(const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    if (!m_hasTemplate) {
        return;
    }
    // A copy takes over the relation of its original, and observes for itself from here on.
    du::SmartPtr<luk::illustration::AssociativeObject> related = m_templateHolder.GetRelatedAssociativeObject();
    const bool isBound = related && m_templateObserver;
    if (!isBound && UpdateAssociativeObject(nullptr)) {
        RegisterTemplateObserver();
        related = m_templateHolder.GetRelatedAssociativeObject();
    }
    CheckForUpdateOf(related, shapeScene);
}

bool SymbolAnnotation::CheckForTemplateUpdate(const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    return CheckForUpdateOf(m_templateHolder.GetRelatedAssociativeObject(), shapeScene);
}

bool SymbolAnnotation::CheckForUpdateOf(const du::SmartPtr<luk::illustration::AssociativeObject>& related,
                                        const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    const auto item = du::DynamicCast<lusymbols::PartslibraryOlItem>(related);
    if (!item) {
        return false;
    }
    const bool hasNewTexts = TakeTexts(*item);
    const bool hasNewShape = TakeShapeFile(*item, shapeScene ? shapeScene : GetShapeScene());
    const bool isChanged = hasNewTexts || hasNewShape;
    if (isChanged) {
        SetDirty();
        NotifySymbolChanged();
    }
    m_needToCheckForTemplateUpdate = false;
    return isChanged;
}

bool SymbolAnnotation::TakeTexts(const lusymbols::PartslibraryOlItem& item)
{
    bool isChanged = TakeWhenDifferent(m_name, item.GetName());
    const bool hasNewTitle = TakeWhenDifferent(m_title, item.GetTitle());
    isChanged = std::exchange(m_showTooltipTitle, item.ShowTooltipTitle()) != item.ShowTooltipTitle() || hasNewTitle ||
                isChanged;
    const bool hasNewDescription = TakeWhenDifferent(m_description, item.GetDescription());
    isChanged =
        std::exchange(m_showTooltipDescription, item.ShowTooltipDescription()) != item.ShowTooltipDescription() ||
        hasNewDescription || isChanged;
    const SequencerTags& tags = item.GetSequencerTags();
    if (!std::equal(m_sequencerTags.begin(), m_sequencerTags.end(), tags.begin(), tags.end(),
                    luk::illustration::SequencerTagPtrComparator())) {
        m_sequencerTags = tags;
        isChanged = true;
    }
    return isChanged;
}

bool SymbolAnnotation::TakeShapeFile(const lusymbols::PartslibraryOlItem& item,
                                     const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    if (NamesFile(item.GetOlUrl(), m_fileName.GetText())) {
        return false;
    }
    std::string url = item.GetOlUrl();
    lusymbols::Partslibrary::CheckRelativeUrlAndConcatIfNeeded(url);
    const du::Symbol file(du::FileSpec(url).GetFile());
    if (file.IsEmpty() || file == m_fileName) {
        return false;
    }
    du::Symbol embedded;
    if (!lusymbols::Partslibrary::EmbedSymbol(du::Symbol(url), embedded, false) ||
        !du::FileSystem::FileExists(embedded.GetText())) {
        return false; // the shape that it has is better than none
    }
    m_fileName = file;
    if (m_shapeInstance && !m_nodeIsForeign && shapeScene) {
        ReplaceShape(shapeScene, embedded.GetText());
    }
    return true;
}

/// The symbol takes another shape where it stands, as it looks.
void SymbolAnnotation::ReplaceShape(const du::SmartPtr<luk::ShapeScene>& shapeScene, const std::string& path)
{
    KeepLocation();
    const bool hasTransparency = m_shapeInstance->HasTransparencyOverride();
    const float transparency = m_shapeInstance->GetTransparencyOverride();
    const du::SmartPtr<lug::Appearance> appearance = m_shapeInstance->GetAppearanceOverride();

    du::SmartPtr<luk::ShapeSource> source;
    luk::ShapeSource::Create(source, path, dg::FBox::EMPTY, 0);
    if (const du::SmartPtr<luk::ComponentNode> node = m_shapeInstance->GetInstance()->GetNode()) {
        node->SetShapeSource(source);
    }
    const du::SmartPtr<luk::Shape> shape = luk::Shape::Get(source);
    shapeScene->ReplaceShapeInstanceShape(m_shapeInstance, shape);
    if (appearance) {
        m_shapeInstance->OverrideAppearance(appearance);
    }
    if (hasTransparency) {
        m_shapeInstance->OverrideTransparency(transparency);
    }
    if (const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader()) {
        loader->LoadShape(shape, 0, du::MakeCounted<luloader::ShapeLoaderEvent>(), DocumentAnchor());
    }
    SetSymbolLocation();
}

} // namespace luannotations
