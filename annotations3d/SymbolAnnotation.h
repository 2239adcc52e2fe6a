#pragma once

#include "annotations3d/ConnectedPartInfo.h"
#include "annotations3d/SymbolAnnotationBase.h"
#include "annotations3d/SymbolInfo.h"

#include <du/SymbolMap.h>
#include <luk/illustration/SymbolTemplateHolder.h>

namespace lug
{
class Appearance;
}

namespace luk
{
class ComponentInstance;
class ComponentNode;
class Instance;
class InstanceInterest;
class Shape;
class ShapeScene;
class ShapeView;
} // namespace luk

namespace luk::illustration
{
class SbomInstance;
class SymbolTemplate;
} // namespace luk::illustration

namespace lusymbols
{
class PartslibraryOlItem;
}

namespace luannotations
{

/// A small shape of the symbol library as a node of its own in the product, on its own or attached to parts, which it then
/// follows when they move, fade or hide.
///
/// Use: apply a record or read saved content, hand over the event to complete when the shape is there, attach to a scene.
/// The shape is loaded asynchronously; the observable event EVENT_MEASUREMENT_DISPLAYED tells when it is shown.
///
/// Frames: locations are absolute in the scene. Only the translation of a part is followed: a part that turns in place
/// leaves the symbol where it is.
///
/// Ownership: holds its shape instance and its observers; is registered with its scene, which detaches it when it is closed.
/// Events of loads hold the symbol until they complete. Detaching removes the node that the symbol made, or that it found
/// from an earlier life; a node of the product that saved content names by mistake is never changed.
///
/// Threads and locks: belongs to the host thread. AttachScene, DetachScene, applying a record and reading take the
/// annotation's write lock; saving, flattening, cloning and IsVisible its read lock. The lock may be absent.
///
/// Errors: nothing is reported but by the results. A shape that cannot be loaded leaves the symbol without one; parts that
/// do not resolve are kept until the symbol is attached to a scene, then dropped.
///
/// Cost: each notification of the scene is constant, whatever the number of other symbols.
class LUSYMBOLS_API SymbolAnnotation : public SymbolAnnotationBase
{
public:
    using SequencerTags = std::vector<du::SmartPtr<luk::illustration::SequencerTag>>;

    SymbolAnnotation();
    ~SymbolAnnotation() override;

    du::SmartPtr<luk::Annotation> Clone() override;
    bool AttachScene(const du::SmartPtr<luk::Scene>& scene) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                         du::SmartPtr<luk::AnnoIdPathMapper> mapper) override;
    bool DetachScene() override;
    bool CanAnimate(du::SmartPtr<luk::OperationStep> step) override;
    bool IsVisible() const override;
    bool Flatten(luk::SerializedContentElement& element, const FlattenMatrices& matrices,
                 const luk::InstanceCheck& check, const dg::Pipeline& pipeline) override;
    du::SmartPtr<luk::ShapeInstance> GetShapeInstance() override;
    /// Brings the offsets from its parts up to date.
    void AdditionalInit() override;
    /// Completed once: with the load of the shape, whatever its outcome, after an attachment that loads none, or when the
    /// symbol is detached.
    void SetEvent(du::SmartPtr<luk::AsyncEvent> event) override;
    /// Moves the coordinate system that the user picked; with `apply` the symbol goes there.
    void SetCsysPos(dg::DPoint3D& position, bool apply) override;
    void GetConnectedPartInfo(std::vector<ConnectedPartInfo>& parts) override;
    void UpdateAnnotationLocation(const dg::Location& location) override;
    void HideAnnotation() override;
    /// Shows the shape unless a part that the symbol is attached to is hidden.
    void ShowAnnotation() override;
    void OnSetSelected(bool selected, const du::SmartPtr<luk::View>& view) override;
    bool HasContent() const override;

    void SetSymbolInfo(const SymbolInfo& info);

    bool IsAnnotationSymbol() const noexcept { return m_isAnnotationSymbol; }
    void SetAnnotationSymbol(bool isAnnotationSymbol) noexcept { m_isAnnotationSymbol = isAnnotationSymbol; }
    int GetAxisId() const noexcept { return m_axisId; }
    void SetAxisId(int axisId) noexcept { m_axisId = axisId; }
    const dg::Location& GetCameraPreviewLocation() const noexcept { return m_cameraPreviewLocation; }
    void SetCameraPreviewLocation(const dg::Location& location) noexcept { m_cameraPreviewLocation = location; }
    double GetDistanceFromCsys() const noexcept { return m_distanceFromCsys; }
    void SetDistanceFromCsys(double distance) noexcept { m_distanceFromCsys = distance; }
    void SetHasColorOverride(bool hasColorOverride) noexcept { m_hasColorOverride = hasColorOverride; }
    const du::Symbol& GetInstanceIdPath() const noexcept { return m_id; }
    void SetInstanceIdPath(const du::Symbol& id) { m_id = id; }
    bool NeedToCheckForTemplateUpdate() const noexcept { return m_needToCheckForTemplateUpdate; }
    void SetNeedToCheckForTemplateUpdate(bool need) noexcept { m_needToCheckForTemplateUpdate = need; }
    void SetSymbolScale(double scale) noexcept { m_symbolScale = scale; }
    double GetSymbolScale() const noexcept { return m_symbolScale; }
    bool IsUseCurrentOrientation() const noexcept { return m_useCurrentOrientation; }
    void SetUseCurrentOrientation(bool use) noexcept { m_useCurrentOrientation = use; }
    void GetSequencerTags(SequencerTags& tags) const { tags = m_sequencerTags; }
    void SetSequencerTags(const SequencerTags& tags) { m_sequencerTags = tags; }
    const dg::Location& GetSelectedCsys() const noexcept { return m_selectedCsys; }
    void SetSelectedCsys(const dg::Location& csys) noexcept { m_selectedCsys = csys; }
    const dg::Location& GetPartCsys() const noexcept { return m_partCsys; }
    void SetPartCsys(const dg::Location& csys) noexcept { m_partCsys = csys; }
    const dg::Location& GetInitLocation() const noexcept { return m_initLocation; }
    const luk::illustration::SymbolTemplateHolder& GetTemplateHolder() const noexcept { return m_templateHolder; }
    const std::string& GetTemplateId() const noexcept { return m_templateId; }
    void SetTemplateId(const std::string& id) { m_templateId = id; }
    /// Whether its location came from a record and no part has placed it since.
    bool IsLegacySymbol() const noexcept { return m_legacy; }
    bool IsSymbolLoaded() const noexcept { return m_symbolLoaded; }

    /// The two ends of the load, for a host that loads by itself.
    bool SymbolLoadedOK();
    bool SymbolLoadFail();
    /// Deletes the folder of files that were taken out of a package for this symbol alone, if there is one.
    void DeleteTempDir();

    /// Works out the placement of a new symbol: the picked coordinate system relative to that of the part, without scale.
    /// @param view for a symbol that keeps the orientation of the view; null: the active view of the application
    void CalculateSymbolLocation(dg::Location& initLocation, dg::Location& partCsys, dg::Location& selectedCsys,
                                 const du::SmartPtr<luk::ShapeView>& view = nullptr);
    void SetSymbolLocation();
    /// Turns a placement as the camera of a view sees it.
    void SetSymbolOrientationByPreviewCamera(dg::Location& placement, const luk::ShapeView& view) const;

    /// Binds the symbol to the entry at an index of the collection; all ones changes nothing.
    void AssignTemplate(std::uint64_t index);
    bool UpdateAssociativeObject(const du::SmartPtr<lusymbols::PartslibraryOlItem>& item);
    void RegisterTemplateObserver();
    void UnregisterTemplateObserver();
    /// Takes over what has changed in the library entry. @return whether anything had
    bool CheckForTemplateUpdate(const du::SmartPtr<luk::ShapeScene>& shapeScene);

    bool IsSbomTreeIdPath(const du::Symbol& path, du::SmartPtr<luk::illustration::SbomInstance>& out) const;
    bool IsEbomTreeIdPath(const du::Symbol& path, du::SmartPtr<luk::Instance>& out) const;
    bool isConnectedPart(const du::Symbol& partId) const;
    bool isConnectedPart(const du::SmartPtr<luk::ShapeInstance>& part) const;
    /// Attaches to a part as it was saved. A part that is attached already, or cannot be found in a live scene, is left
    /// out.
    void AddSelectedPart(const du::Symbol& partId, const dg::DPoint3D& lastPos, const dg::DVec3& offset,
                         const du::Symbol& assemblyPartId);
    /// Attaches to a part that the user picked.
    /// @param point where it was picked; bad when there is no such point
    void AddSelectedPart(const du::SmartPtr<luk::ShapeInstance>& part, const du::SmartPtr<luk::ShapeScene>& scene,
                         const du::SmartPtr<luk::Instance>& instance, const dg::DPoint3D& point);
    /// The same for many, in a time that grows with their number.
    void AddSelectedParts(const std::vector<du::SmartPtr<luk::ShapeInstance>>& parts);
    /// Only for an annotation symbol.
    void AddConnectedPartsByPath(const std::vector<ConnectedPartInfo>& parts);
    void RemoveUnvalidParts();
    void SaveLastConnectPartPos(const du::SmartPtr<luk::ShapeInstance>& part);
    void UpdateOffsetWithConnectedParts();
    void ApplyDeltaByConnectedPart(const du::SmartPtr<luk::ShapeInstance>& part);
    void UpdateSymbolLocationByOffset(const du::SmartPtr<luk::ShapeInstance>& part, const dg::Location& location);

    /// A connected part has appeared: its shape is loaded, and the symbol follows up once it is.
    /// @param mode false to refresh the offsets, true to move the symbol
    /// @param second with `mode`: true to place the symbol by its offset, false to follow the part's move
    void OnShapeInstanceCreate(const du::SmartPtr<luk::ShapeInstance>& part, bool mode, bool second,
                               const dg::Location& location);
    void OnShapeInstanceRemove(const du::SmartPtr<luk::ShapeInstance>& instance);
    void OnShapeInstancesAppearanceModified();
    void LoadConnectedPartShapeData(const du::SmartPtr<luk::ShapeInstance>& part,
                                    const du::SmartPtr<luk::AsyncEvent>& event);
    void NotifySymbolChanged();
    void SetDirty();

protected:
    SymbolAnnotation(const SymbolAnnotation& other);
    void SerializeContent(luk::SerializedContentElement& element) override;

private:
    class LoadingConnectPartEvent;
    class MyLoadEvent;
    class PartTrees;
    class ShapeSceneObserver;
    class SymbolTemplateObserver;
    using PartEntry = std::vector<ConnectedPartInfo>::iterator;

    // Placement
    bool CreateSymbol(const du::SmartPtr<luk::ShapeScene>& shapeScene);
    bool InsertSymbolToTree(du::SmartPtr<luk::Instance>& out);
    bool CreateNode(du::SmartPtr<luk::Instance>& out);
    bool MakeId(const luk::ComponentNode& root);
    bool LeaveScene();
    void KeepLocation();
    void KeepAppearance();
    void RemoveSymbol();
    bool GetOlFromTempDir(std::string& path) const;
    void PlaceNode(const luk::Instance& instance);
    void PlaceShapeInstance();
    /// Position, orientation and scale of a location. A matrix that still is what the record made of an orientation and a
    /// scale gives these, since splitting it rounds: the symbol would otherwise turn a little with every save.
    void SplitLocation(const dg::Location& location, dg::DPoint3D& position, dg::Quaternion<float>& orientation,
                       double& scale) const;
    void HideWithParts(const PartTrees& trees);
    bool HasHiddenPart(const PartTrees& trees) const;
    void ApplyAppearance(luk::ShapeInstance& shapeInstance) const;
    void LoadSymbolShape();
    bool IsNowhere() const;
    void FollowPresentParts(const PartTrees& trees);
    void PlaceWithoutParts(const PartTrees& trees);
    du::SmartPtr<luk::ShapeScene> GetShapeScene() const;
    void MoveTo(const dg::Location& location);
    void ReplaceSceneObserver(const du::SmartPtr<luk::ShapeScene>& shapeScene);
    void DropSceneObserver();
    void CompletePendingEvent(int status);
    void ReleaseWhoWaitsInVain();
    void OnShapeLoaded(bool isLoaded);

    // Template
    void BindTemplateAtAttach(const du::SmartPtr<luk::ShapeScene>& shapeScene);
    void UnregisterConsumer();
    void ReleaseTemplate();
    bool CheckForUpdateOf(const du::SmartPtr<luk::illustration::AssociativeObject>& related,
                          const du::SmartPtr<luk::ShapeScene>& shapeScene);
    bool TakeTexts(const lusymbols::PartslibraryOlItem& item);
    bool TakeShapeFile(const lusymbols::PartslibraryOlItem& item, const du::SmartPtr<luk::ShapeScene>& shapeScene);
    void ReplaceShape(const du::SmartPtr<luk::ShapeScene>& shapeScene, const std::string& path);

    // Attachment
    void RemoveUnvalidParts(const PartTrees& trees);
    bool GetConnectedPartAssembly(const ConnectedPartInfo& entry, du::SmartPtr<luk::Instance>& assembly) const;
    std::size_t FindPart(const du::Symbol& path) const;
    std::size_t FindPart(const du::SmartPtr<luk::ShapeInstance>& part) const;
    PartEntry GetConnectedPartEntry(const du::SmartPtr<luk::ShapeInstance>& part);
    bool GetPartLocation(const du::SmartPtr<luk::ShapeInstance>& part, const ConnectedPartInfo& entry,
                         dg::Location& location) const;
    bool CheckValidInstance(const du::SmartPtr<luk::Instance>& instance) const;
    void UpdateOffset(std::size_t index, const luk::ShapeScene& scene, const PartTrees& trees);
    void UpdateOffsetsSoon();
    void AppendPart(const ConnectedPartInfo& entry);
    void AppendPickedPart(const du::SmartPtr<luk::ShapeInstance>& picked, const du::SmartPtr<luk::Instance>& instance,
                          const dg::DPoint3D& point);
    void IndexParts();
    void RefreshInterest();

    bool m_symbolLoaded = false;
    du::SmartPtr<luk::ShapeInstance> m_shapeInstance;
    du::SmartPtr<ShapeSceneObserver> m_sceneObserver;
    bool m_legacy = false;
    bool m_hasAppearanceOverride = false;
    bool m_hasColorOverride = true;
    bool m_appearanceIsDue = false; ///< the last record's has not been given to the shape yet
    du::SmartPtr<lug::Appearance> m_overrideAppearance;
    float m_overrideTransparency = 0.0F; ///< of saved content, or of the shape before it was detached; 0 for none
    double m_symbolScale = 1.0;
    dg::Location m_location;
    dg::Quaternion<float> m_recordOrientation; ///< of the last record, with its scale: see SplitLocation
    double m_recordScale = 1.0;
    dg::Location m_initLocation = dg::Location::IDENTITY;
    dg::Location m_selectedCsys = dg::Location::IDENTITY;
    dg::Location m_partCsys = dg::Location::IDENTITY;
    std::string m_tempDir;
    int m_axisId = 0;
    double m_distanceFromCsys = 0.0;
    bool m_isAnnotationSymbol = false;
    bool m_useCurrentOrientation = false;
    std::vector<ConnectedPartInfo> m_connectedParts;
    dg::Location m_cameraPreviewLocation;
    SequencerTags m_sequencerTags;
    std::string m_templateId;
    bool m_hasTemplate = false;
    bool m_needToCheckForTemplateUpdate = false;
    luk::illustration::SymbolTemplateHolder m_templateHolder;

    du::SmartPtr<SymbolTemplateObserver> m_templateObserver;
    du::SmartPtr<luk::AsyncEvent> m_pendingEvent;
    du::SmartPtr<luk::illustration::SymbolTemplate> m_consumedTemplate; ///< the entry that knows this symbol
    MyLoadEvent* m_loadEvent = nullptr;             ///< the one that still counts; takes itself out when it goes
    du::SmartPtr<luk::InstanceInterest> m_interest; ///< own node and connected parts
    du::SymbolMap<std::size_t> m_partIndex;         ///< part id to its place in the list, once there are many
    du::SymbolSet m_triedParts;                     ///< whose location failed since they appeared
    du::SmartPtr<luk::ComponentInstance> m_ownUse;  ///< the node's place below the root, when this symbol may remove it
    bool m_nodeIsForeign = false;                   ///< the node is a part of the product and must not be changed
    bool m_isFollowing = false;
    bool m_offsetsAreDue = false;
};

} // namespace luannotations
