#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dg/Location.h>
#include <luk/Annotation.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/AssociativeObjectSaver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/ShapeSceneObserver.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

/// Plug-ins are built apart from the host, so that the place of each virtual operation is part of the interface. Under
/// the Itanium ABI a pointer to a virtual member holds its place in the table of the class.
#if defined(__x86_64__) && !defined(_WIN32)

namespace
{

template <class Member>
std::size_t SlotOf(Member member)
{
    static_assert(sizeof(member) == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof(offset));
    EXPECT_EQ(offset % 2, 1) << "not virtual";
    return static_cast<std::size_t>(offset - 1) / sizeof(void*);
}

/// The destructor takes two places.
constexpr std::size_t kZeroHook = 2;

struct Entry : luk::illustration::SymbolTemplate {
    using luk::illustration::SymbolTemplate::SymbolTemplate;
    virtual void SetTitle(const std::string&) {}
    static auto ZeroHook() { return &Entry::ZeroReferenceCountHook; }
};

void ExpectOneAfterTheOther(const std::vector<std::size_t>& slots)
{
    for (std::size_t i = 1; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i], slots[i - 1] + 1) << "operation " << i;
    }
}

TEST(SlotOrder, OfAnEntry)
{
    ExpectOneAfterTheOther({kZeroHook - 1, SlotOf(Entry::ZeroHook()), SlotOf(&Entry::GetType), SlotOf(&Entry::Compare),
                            SlotOf(&Entry::GetFigures), SlotOf(&Entry::Save), SlotOf(&Entry::SaveConsumers),
                            SlotOf(&Entry::SetTitle)});
}

TEST(SlotOrder, OfLoaderAndSaver)
{
    using Loader = lukapp::illustration::SymbolTemplateLoader;
    ExpectOneAfterTheOther({kZeroHook, SlotOf(&Loader::GetCollectionInformation), SlotOf(&Loader::SetPreferences),
                            SlotOf(&Loader::GetTemplateList), SlotOf(&Loader::GetCategoryList)});
    EXPECT_EQ(SlotOf(&luk::illustration::AssociativeObjectSaver::SetCollectionInformation), kZeroHook + 1);
    EXPECT_EQ(SlotOf(&luk::illustration::CategoryInfo::GetType), kZeroHook + 1);
}

TEST(SlotOrder, OfObservers)
{
    using Observer = luk::illustration::AssociativeObjectObserver;
    ExpectOneAfterTheOther({SlotOf(&dom::Observer::RequiresBeginEnd), SlotOf(&dom::Observer::OnDetached)});
    ExpectOneAfterTheOther(
        {SlotOf(&Observer::OnCollectionLoadedFromStandard), SlotOf(&Observer::OnAssociativeObjectChanged)});
    using SceneObserver = luk::ShapeSceneObserver;
    ExpectOneAfterTheOther({
        SlotOf(&SceneObserver::OnBeginUpdate),
        SlotOf(&SceneObserver::OnEndUpdate),
        SlotOf(&SceneObserver::OnSequenceChanged),
        SlotOf(&SceneObserver::OnShapeInstanceCreate),
        SlotOf(&SceneObserver::OnShapeInstanceRemove),
        SlotOf(&SceneObserver::OnShapeInstanceSourceReplace),
        SlotOf(&SceneObserver::OnShapeInstanceVisibilityChanged),
        SlotOf(&SceneObserver::OnShapeInstanceVisibilityFractionChanged),
        SlotOf(&SceneObserver::OnShapeInstanceHighlight),
        SlotOf(&SceneObserver::OnShapeInstanceLocationChanged),
        SlotOf(&SceneObserver::OnShapeInstanceDragStart),
        SlotOf(&SceneObserver::OnShapeInstanceColorChanged),
        SlotOf(&SceneObserver::OnShapeInstanceViewStateChanged),
        SlotOf(&SceneObserver::OnShapeInstanceTransparencyChanged),
        SlotOf(&SceneObserver::OnShapeInstanceAppearanceChanged),
        SlotOf(&SceneObserver::OnShapeInstanceSelectionChanged),
    });
    static_assert(!std::is_base_of_v<luk::MemoryPoolAllocated, Observer>, "observers use the ordinary allocator");
}

TEST(SlotOrder, OfEvents)
{
    using Event = luk::BaseAsyncEvent;
    ExpectOneAfterTheOther({SlotOf(&Event::GetObjectClass), SlotOf(&Event::HandleEvent), SlotOf(&Event::OnProgress),
                            SlotOf(&Event::OnCompleted)});
}

TEST(SlotOrder, OfAnAnnotation)
{
    using luk::Annotation;
    using Element = const luk::SerializedContentElement*;
    ExpectOneAfterTheOther({
        SlotOf(&Annotation::IsZoomable),
        SlotOf(&Annotation::AllowGroupDrag),
        SlotOf(&Annotation::Clone),
        SlotOf(&Annotation::AttachScene),
        SlotOf(static_cast<bool (Annotation::*)(Element)>(&Annotation::InitializeFromSerializedContent)),
        SlotOf(static_cast<bool (Annotation::*)(Element, du::SmartPtr<luk::AnnoIdPathMapper>)>(
            &Annotation::InitializeFromSerializedContent)),
        SlotOf(&Annotation::DetachScene),
        SlotOf(&Annotation::CanAnimate),
        SlotOf(&Annotation::GetIconName),
        SlotOf(&Annotation::IsVisible),
        SlotOf(&Annotation::GetObjectDescription),
        SlotOf(&Annotation::GetBBox),
        SlotOf(&Annotation::GetManipulationTypes),
        SlotOf(&Annotation::MarkupUpdated),
        SlotOf(&Annotation::Visit),
        SlotOf(&Annotation::Flatten),
        SlotOf(&Annotation::CreateAnnotation2D),
        SlotOf(&Annotation::CompleteAnnotation2D),
        SlotOf(&Annotation::GetShapeInstance),
        SlotOf(&Annotation::AdditionalInit),
        SlotOf(&Annotation::SetEvent),
        SlotOf(&Annotation::SetCsysPos),
        SlotOf(&Annotation::GetConnectedPartInfo),
        SlotOf(&Annotation::UpdateAnnotationLocation),
        SlotOf(&Annotation::HideAnnotation),
        SlotOf(&Annotation::ShowAnnotation),
        SlotOf(&Annotation::OnSetSelected),
        SlotOf(&Annotation::OnViewActivated),
        SlotOf(&Annotation::OnViewDeactivated),
        SlotOf(&Annotation::GetPageNum),
        SlotOf(&Annotation::SetPageNum),
        SlotOf(&Annotation::NumberOfMarkups),
        SlotOf(&Annotation::GetMarkupName),
        SlotOf(&Annotation::GetMarkupSize),
        SlotOf(&Annotation::SetMarkupSize),
        SlotOf(&Annotation::GetMarkupLocation),
        SlotOf(&Annotation::SetMarkupLocation),
        SlotOf(&Annotation::GetMarkupShadow),
        SlotOf(&Annotation::GetMarkupPixelBBox),
        SlotOf(&Annotation::HasContent),
    });
}

} // namespace

#endif
