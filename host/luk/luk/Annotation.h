#pragma once

#include <dg/DBox.h>
#include <dg/DBox2D.h>
#include <dg/FVec3.h>
#include <dg/Location.h>
#include <du/SmartPtr.h>
#include <luk/MarkupController.h>
#include <luk/Observable.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dg
{
class DMat33;
class DMat44;
class Pipeline;
} // namespace dg

namespace lucontext
{
struct Context2D;
}

namespace luannotations
{
struct ConnectedPartInfo;
}

namespace luk
{

class AnnoIdPathMapper;
class AnnoSet;
class AsyncEvent;
class InstanceCheck;
class Markup;
class MarkupShadow;
class Operation;
class OperationStep;
class Scene;
class SerializedContentElement;
class ShapeInstance;
class View;

/// Something that a user has put into a scene to explain the product: a note, a dimension, a symbol.
///
/// Use: a host drives every annotation through the virtual operations below, in the order in which they stand here,
/// which is the order of their slots. Each base operation is complete in itself and may be called by its qualified name.
///
/// Ownership: an attached annotation holds its scene until DetachScene. The set of annotations owns its members;
/// GetAnnoSet is a plain way back. Markups do not own their controller.
///
/// Threads and locks: called on the host thread. Operations marked [read lock] or [write lock] take the annotation's
/// lock, which is reentrant per thread and may be absent.
///
/// Copies: a copy has the same class, cursor, name, id path and flags. It belongs to no scene and to no set, is not
/// selected, has no observers, and has a lock of its own.
class LUHOST_API Annotation : public MarkupController, public Observable
{
public:
    class SerializedContentVisitor;

    /// Bits that say which manipulations a user is offered.
    enum ManipulationType : unsigned int { MANIPULATION_NONE = 0 };

    using FlattenMatrices = std::map<std::size_t, std::pair<dg::DMat44, dg::DMat33>>;

    ~Annotation() override;

    /// Answers the annotation's class word.
    du::Symbol GetObjectClass() const override;

    virtual bool IsZoomable() const;
    virtual bool AllowGroupDrag() const;

    /// @return an annotation of the same concrete class that is in no scene; null from the base
    virtual du::SmartPtr<Annotation> Clone();

    /// [write lock] Keeps the scene; repeating, and a null scene, are without effect. @return false when it failed
    virtual bool AttachScene(const du::SmartPtr<Scene>& scene);

    /// Takes over saved content; overrides hold the write lock until the record is applied.
    /// @return false for a null element
    virtual bool InitializeFromSerializedContent(const SerializedContentElement* element);
    virtual bool InitializeFromSerializedContent(const SerializedContentElement* element,
                                                 du::SmartPtr<AnnoIdPathMapper> mapper);

    /// [write lock] Drops the scene, and takes the annotation out of the scene that it is registered with.
    virtual bool DetachScene();

    virtual bool CanAnimate(du::SmartPtr<OperationStep> step);
    virtual du::Symbol GetIconName() const;

    /// [read lock] The annotation's own visibility; a class whose picture can be hidden on its own asks that as well.
    virtual bool IsVisible() const;

    /// What people call this annotation in lists and messages.
    virtual std::string GetObjectDescription() const;

    /// Empty when there is nothing to enclose.
    virtual dg::DBox GetBBox() const;
    virtual ManipulationType GetManipulationTypes() const;

    /// [after AttachScene] The user has dragged or sized the markup.
    /// @param shadow may be null
    /// @param operation the undo record to add steps to, may be null
    virtual bool MarkupUpdated(const du::SmartPtr<Markup>& markup, const du::SmartPtr<MarkupShadow>& shadow,
                               const du::SmartPtr<Operation>& operation);

    /// [read lock] Writes the content on the given element: "annoId", "annoName", "annoVisible", then what was read and not
    /// understood. The host calls no foreign code meanwhile.
    virtual void Visit(SerializedContentElement& element);

    /// Writes what a flattened drawing keeps of the annotation. @return false when there is nothing to keep
    virtual bool Flatten(SerializedContentElement& element, const FlattenMatrices& matrices, const InstanceCheck& check,
                         const dg::Pipeline& pipeline);

    virtual void CreateAnnotation2D(const du::SmartPtr<Scene>& scene);
    virtual void CompleteAnnotation2D(const du::SmartPtr<Scene>& scene, const du::SmartPtr<AsyncEvent>& event);

    /// Null for an annotation that is no shape.
    virtual du::SmartPtr<ShapeInstance> GetShapeInstance();
    /// [after AttachScene]
    virtual void AdditionalInit();

    /// The event to complete once everything that the annotation needs is loaded.
    virtual void SetEvent(du::SmartPtr<AsyncEvent> event);

    virtual void SetCsysPos(dg::DPoint3D& position, bool apply);
    /// Copies out the parts to which the annotation is attached. The record belongs to the annotation module.
    virtual void GetConnectedPartInfo(std::vector<luannotations::ConnectedPartInfo>& parts);
    virtual void UpdateAnnotationLocation(const dg::Location& location);

    /// Called by Hide and Show for whatever else has to be hidden or shown.
    virtual void HideAnnotation();
    virtual void ShowAnnotation();

    virtual void OnSetSelected(bool selected, const du::SmartPtr<View>& view);

    /// The view that shows the annotation's scene was brought to the front, or went to the back.
    virtual void OnViewActivated();
    virtual void OnViewDeactivated();

    virtual int GetPageNum() const;
    virtual void SetPageNum(int pageNum);

    virtual unsigned int NumberOfMarkups() const;
    virtual std::string GetMarkupName(unsigned int index) const;
    virtual dg::FVec3 GetMarkupSize(unsigned int index) const;
    virtual void SetMarkupSize(unsigned int index, const dg::FVec3& size);
    virtual dg::Location GetMarkupLocation(unsigned int index) const;
    virtual void SetMarkupLocation(unsigned int index, const dg::Location& location);
    virtual du::SmartPtr<MarkupShadow> GetMarkupShadow(unsigned int index);
    virtual dg::DBox2D GetMarkupPixelBBox(const dg::Pipeline& pipeline, const lucontext::Context2D& context,
                                          int resolution) const;

    /// Whether there is anything to save.
    virtual bool HasContent() const;

    /// Changes the own visibility under the write lock, then calls ShowAnnotation or HideAnnotation without it, whether it
    /// changed or not.
    /// @param notify post EVENT_VISIBILITY_CHANGED when the own visibility did change
    void Show(bool notify, const du::SmartPtr<View>& view);
    void Hide(bool notify, const du::SmartPtr<View>& view, int reason);

    /// Calls OnSetSelected.
    void SetSelected(bool selected, const du::SmartPtr<View>& view);
    bool IsSymbolSelected() const noexcept { return m_selected; }

    /// Word of the class, by which a factory makes the annotation again; null until it is set.
    const du::Symbol& GetClass() const noexcept { return m_class; }
    const du::Symbol& GetPreselectionCursor() const noexcept { return m_preselectionCursor; }

    /// The name that the host knows the annotation by; null when it has none.
    const du::Symbol& GetObjectName() const noexcept { return m_objectName; }
    void SetObjectName(const du::Symbol& name) { m_objectName = name; }
    const du::Symbol& GetIDPath() const noexcept { return m_idPath; }
    void SetIDPath(const du::Symbol& idPath) { m_idPath = idPath; }

    /// What was read and not understood, which Visit writes again; null when there is none.
    const SerializedContentElement* GetUnknownContent() const noexcept { return m_unknownContent.get(); }

    bool CreatedFromFile() const noexcept { return m_createdFromFile; }
    void SetCreatedFromFile(bool fromFile) noexcept { m_createdFromFile = fromFile; }

    /// [any thread] As that of every observable object.
    void PostObservableEvent(int kind) { Observable::PostObservableEvent(kind, *this); }

    /// [read lock] Null when attached to none.
    du::SmartPtr<Scene> GetScene() const;
    /// Null when in none; does not own.
    AnnoSet* GetAnnoSet() const noexcept { return m_annoSet; }

protected:
    Annotation();
    Annotation(const Annotation& other);
    Annotation& operator=(const Annotation& other);

    void SetClass(const du::Symbol& classWord) { m_class = classWord; }
    void SetPreselectionCursor(const du::Symbol& cursor) { m_preselectionCursor = cursor; }

private:
    friend class AnnoSet;
    friend class Scene;

    bool SetOwnVisibility(bool visible);

    du::Symbol m_class;
    du::Symbol m_preselectionCursor;
    du::Symbol m_objectName;
    du::Symbol m_idPath;
    du::SmartPtr<Scene> m_scene;
    std::unique_ptr<SerializedContentElement> m_unknownContent; ///< read and not understood; null when there is none
    Scene* m_registeredWith = nullptr;                          ///< kept by the scene
    AnnoSet* m_annoSet = nullptr;                               ///< kept by the set
    bool m_visible = true;
    bool m_selected = false;
    bool m_createdFromFile = false;
};

} // namespace luk
