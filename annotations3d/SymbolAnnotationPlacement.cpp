#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationEvents.h"
#include "annotations3d/SymbolPartTrees.h"
#include "catalog/FileNames.h"

#include <dg/DMat44.h>
#include <dg/FBox.h>
#include <dg/Traits.h>
#include <dp/WriteLockGuard.h>
#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <lug/Appearance.h>
#include <luk/ComponentInstance.h>
#include <luk/ComponentNode.h>
#include <luk/illustration/RunningMode.h>
#include <luk/InstanceInterest.h>
#include <luk/Kernel.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeScene.h>
#include <luk/ShapeSource.h>
#include <luk/ShapeView.h>
#include <luk/Structure.h>
#include <luk/Tree.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/IllMultiRootContainer.h>
#include <lukapp/LukApp.h>
#include <lukapp/SceneManager.h>
#include <luloader/Loader.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace luannotations
{

namespace
{

du::SmartPtr<luk::Structure> PrimaryStructure()
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const du::SmartPtr<luk::MultiRootContainer> container = world ? world->GetContainer() : nullptr;
    return container ? container->GetPrimaryStructure() : nullptr;
}

du::SmartPtr<luk::Tree> ProductTree()
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    return world ? world->GetTree() : nullptr;
}

du::SmartPtr<luk::Instance> FindBelowRoot(const du::Symbol& id)
{
    const du::SmartPtr<luk::Tree> tree = ProductTree();
    return tree ? tree->FindInstance(du::Symbol::Find("/" + id.GetText())) : nullptr;
}

/// Whether the id of a document can lead to a node at all: neither empty nor with an empty component.
bool IsIdPath(const du::Symbol& id)
{
    const std::string& text = id.GetText();
    return !text.empty() && text.front() != '/' && text.back() != '/' && text.find("//") == std::string::npos;
}

/// A node of a symbol is a child of the root by the id that symbols are given.
bool IsSymbolNode(const luk::Instance& instance)
{
    const luk::Instance* const parent = instance.GetParent();
    const bool isBelowRoot = parent && !parent->GetParent();
    return isBelowRoot && instance.GetComponentInstance() &&
           instance.GetComponentInstance()->GetId().GetText().starts_with(
               luk::Instance::s_content_symbolPrefix.GetText());
}

bool IsIdentity(const dg::Location& location)
{
    constexpr double kFourRoundings = 8.881784e-16;
    return dg::ApproximateEquality(location, dg::Location::IDENTITY, std::max(kFourRoundings, dg::Traits::s_EPSILON));
}

/// The matrix with columns of length 1; a column without a length stays as it is.
dg::FMat33 WithoutScale(const dg::FMat33& matrix)
{
    const dg::DVec3 scale = matrix.GetScale();
    if (dg::ApproximateEquality(scale, dg::DVec3(1.0, 1.0, 1.0), dg::Traits::s_EPSILON)) {
        return matrix;
    }
    const auto factor = [](double length) { return length > 0.0 && std::isfinite(length) ? 1.0 / length : 1.0; };
    return matrix * dg::FMat33::Scaling(factor(scale.x), factor(scale.y), factor(scale.z));
}

} // namespace

bool SymbolAnnotation::AttachScene(const du::SmartPtr<luk::Scene>& scene)
{
    // The host calls back while the symbol is placed, and may let go of it.
    const du::SmartPtr<luk::Annotation> self(this);
    bool isAttached = false;
    {
        const dp::WriteLockGuard lock(GetLock());
        du::SmartPtr<luk::ShapeScene> shapeScene = GetShapeScene();
        if (!shapeScene) {
            shapeScene = du::DynamicCast<luk::ShapeScene>(scene);
        }
        if (shapeScene && shapeScene->IsClosed()) {
            shapeScene = nullptr;
        }
        if (m_shapeInstance && !GetShapeScene()) {
            KeepLocation();
            KeepAppearance();
            m_shapeInstance = nullptr; // its scene is gone
        }
        ReplaceSceneObserver(shapeScene);
        BindTemplateAtAttach(shapeScene);
        luk::Annotation::AttachScene(scene);
        if (scene) {
            scene->RegisterAnnotation(self); // so that it is detached when the scene is closed
        }
        if (shapeScene && !m_fileName.IsEmpty()) {
            if (m_shapeInstance) {
                isAttached = true;
                if (!m_nodeIsForeign) {
                    shapeScene->RecreateShapeInstance(m_shapeInstance);
                }
                CheckForTemplateUpdate(shapeScene);
                if (m_pendingEvent && !m_loadEvent) {
                    LoadSymbolShape(); // for the one who waits; a shape that is there completes as well
                }
            } else {
                // Before the load as well: its completion has to find the mark.
                m_needToCheckForTemplateUpdate = true;
                isAttached = CreateSymbol(shapeScene);
                m_needToCheckForTemplateUpdate = true;
            }
        }
    }
    const PartTrees trees(GetShapeScene());
    RemoveUnvalidParts(trees);
    PlaceWithoutParts(trees);
    ReleaseWhoWaitsInVain();
    return isAttached;
}

bool SymbolAnnotation::DetachScene()
{
    const du::SmartPtr<luk::Annotation> self(this);
    const bool isDetached = LeaveScene();
    // Whoever waits for the shape is released too, once nothing of the scene is left, and may attach the symbol again.
    CompletePendingEvent(1);
    return isDetached;
}

bool SymbolAnnotation::LeaveScene()
{
    const dp::WriteLockGuard lock(GetLock());
    // The observer first: removing the node would otherwise come back as "removed" and detach the symbol again.
    DropSceneObserver();
    if (m_loadEvent) {
        std::exchange(m_loadEvent, nullptr)->Cancel();
    }
    ReleaseTemplate();
    UpdateOffsetWithConnectedParts();
    KeepLocation();
    KeepAppearance();
    RemoveSymbol();
    m_shapeInstance = nullptr;
    m_symbolLoaded = false;
    m_nodeIsForeign = false;
    m_triedParts.clear();
    RefreshInterest();
    return luk::Annotation::DetachScene();
}

/// For the next attachment, so that the undoing of a deletion shows the symbol where it was.
void SymbolAnnotation::KeepLocation()
{
    if (m_shapeInstance && !m_nodeIsForeign && m_shapeInstance->GetLocation().HasPosition()) {
        m_location = m_shapeInstance->GetLocation();
        m_legacy = true;
    }
}

/// For the same reason, since the shape may have been given another colour than the last record says.
void SymbolAnnotation::KeepAppearance()
{
    if (!m_shapeInstance || m_nodeIsForeign || m_appearanceIsDue) {
        return;
    }
    m_overrideTransparency = m_shapeInstance->GetTransparency();
    const du::SmartPtr<lug::Appearance>& appearance = m_shapeInstance->GetAppearanceOverride();
    if (appearance) {
        m_overrideAppearance = appearance;
    }
    // A symbol that does not show its override has none to lose.
    m_hasAppearanceOverride = appearance || (m_hasAppearanceOverride && !m_hasColorOverride);
}

bool SymbolAnnotation::CreateSymbol(const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    if (m_fileName.IsEmpty()) {
        return false;
    }
    du::SmartPtr<luk::Instance> instance;
    if (!InsertSymbolToTree(instance) || !instance) {
        return false;
    }
    if (!m_legacy) {
        CalculateSymbolLocation(m_initLocation, m_partCsys, m_selectedCsys);
    }
    PlaceNode(*instance);
    const du::SmartPtr<luk::ShapeInstance> shapeInstance = shapeScene->GetShapeInstance(instance);
    if (shapeInstance && !m_nodeIsForeign) {
        // Not yet as the symbol's own, whose change of appearance brings the annotation in line with what is seen of it.
        ApplyAppearance(*shapeInstance);
        m_appearanceIsDue = false;
    }
    m_shapeInstance = shapeInstance;
    RefreshInterest();
    if (!m_shapeInstance) {
        return false;
    }
    const PartTrees trees(shapeScene);
    if (!m_nodeIsForeign) {
        m_shapeInstance->SetUserData(GetUserDataId(), m_interest);
        PlaceShapeInstance();
        HideWithParts(trees);
    }
    LoadSymbolShape();
    FollowPresentParts(trees);
    return true;
}

bool SymbolAnnotation::InsertSymbolToTree(du::SmartPtr<luk::Instance>& out)
{
    out = IsIdPath(m_id) ? FindBelowRoot(m_id) : nullptr;
    if (!out) {
        return CreateNode(out);
    }
    m_nodeIsForeign = !IsSymbolNode(*out);
    m_ownUse = m_nodeIsForeign ? nullptr : out->GetComponentInstance();
    return true;
}

bool SymbolAnnotation::CreateNode(du::SmartPtr<luk::Instance>& out)
{
    const du::SmartPtr<luk::Structure> structure = PrimaryStructure();
    const du::SmartPtr<luk::ComponentNode> root = structure ? structure->GetRoot() : nullptr;
    if (!root || !MakeId(*root)) {
        return false;
    }
    // A file that is not there is told by its load.
    du::SmartPtr<luk::ShapeSource> source;
    std::string path;
    GetOlFromTempDir(path);
    luk::ShapeSource::Create(source, path, dg::FBox::EMPTY, 0);
    const du::SmartPtr<luk::ComponentNode> node = structure->CreateComponentNode(m_name);
    node->SetShapeSource(source);
    if (!root->AddChild(node, m_id, m_ownUse)) {
        return false;
    }
    m_nodeIsForeign = false;
    const du::SmartPtr<luk::Tree> tree = ProductTree();
    out = tree ? tree->FindOccurrence(*m_ownUse) : nullptr;
    return out != nullptr;
}

/// Leaves an id that can be used as it is.
bool SymbolAnnotation::MakeId(const luk::ComponentNode& root)
{
    const bool isUsable = IsIdPath(m_id) && m_id.GetText().find('/') == std::string::npos;
    if (isUsable) {
        return true;
    }
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    const auto container = du::DynamicCast<lukapp::illustration::IllMultiRootContainer>(
        world ? world->GetContainer() : du::SmartPtr<luk::MultiRootContainer>());
    if (!container) {
        return false;
    }
    do {
        m_id = du::Symbol(luk::Instance::s_content_symbolPrefix.GetText() +
                          std::to_string(container->GetFileInfo()->GetNextStructureId()));
    } while (root.FindChild(m_id));
    return true;
}

void SymbolAnnotation::RemoveSymbol()
{
    // By its use and not by the id, which may have been changed since and name something else.
    const du::SmartPtr<luk::ComponentInstance> use = std::exchange(m_ownUse, nullptr);
    if (const du::SmartPtr<luk::ComponentNode> root(use ? use->GetParentNode() : nullptr); root) {
        root->RemoveChild(use->GetId());
    }
}

bool SymbolAnnotation::GetOlFromTempDir(std::string& path) const
{
    const std::string& name = m_fileName.GetText();
    if (!lusymbols::IsPlainFileName(name)) {
        return false;
    }
    if (!luk::illustration::IsRunningIllustrate()) {
        du::Symbol url;
        Symbol2D::ExtractSymbolsFromLuzFile(url, m_fileName);
        path = url.GetText();
        return true;
    }
    const auto app = lukapp::illustration::DrellinApp::GetDrellinApp();
    du::Symbol folder;
    if (!app || !app->GetTemporaryDirectory(folder)) {
        return false;
    }
    constexpr std::string_view kFolder = "Symbols";
    path.reserve(folder.GetText().size() + kFolder.size() + name.size() + 2);
    path.assign(folder.GetText()).append(1, du::FileSpec::DIR_SEP_CHAR).append(kFolder);
    path.append(1, du::FileSpec::DIR_SEP_CHAR).append(name);
    return du::FileSystem::FileExists(path);
}

void SymbolAnnotation::PlaceNode(const luk::Instance& instance)
{
    const dg::Location& placement = m_legacy ? m_location : m_initLocation;
    const du::SmartPtr<luk::ComponentInstance>& componentInstance = instance.GetComponentInstance();
    if (m_ownUse && componentInstance && !IsIdentity(placement)) {
        componentInstance->SetLocation(placement);
    }
}

void SymbolAnnotation::PlaceShapeInstance()
{
    if (!m_legacy) {
        MoveTo(m_initLocation);
    } else if (m_connectedParts.empty()) {
        MoveTo(m_location);
    } else {
        // Its parts say where it is, once they are there.
        MoveTo(dg::Location(m_location.GetMat(), dg::DPoint3D::BAD));
    }
}

/// A hidden annotation and one on a hidden part come up hidden. Silently, as when the part is hidden later.
void SymbolAnnotation::HideWithParts(const PartTrees& trees)
{
    if (!luk::Annotation::IsVisible() || HasHiddenPart(trees)) {
        m_shapeInstance->SetVisibility(false, false);
    }
}

void SymbolAnnotation::ApplyAppearance(luk::ShapeInstance& shapeInstance) const
{
    if (m_overrideTransparency > 0.0F) {
        shapeInstance.OverrideTransparency(m_overrideTransparency);
    }
    if (!m_hasAppearanceOverride) {
        shapeInstance.RestoreAppearanceOverride(true, false);
        return;
    }
    const lug::Material* const material = m_overrideAppearance ? m_overrideAppearance->GetMaterial() : nullptr;
    if (material && m_hasColorOverride) {
        shapeInstance.SetColor(material->GetDiffuse());
        // With all that goes with the colour, which would otherwise be gone after the next save.
        shapeInstance.OverrideAppearance(m_overrideAppearance);
    }
}

void SymbolAnnotation::LoadSymbolShape()
{
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    const du::SmartPtr<luk::Shape> shape = m_shapeInstance->GetShape();
    if (!loader || !kernel || !shape) {
        return;
    }
    if (m_loadEvent) {
        m_loadEvent->Cancel();
    }
    const auto event = du::MakeCounted<MyLoadEvent>(du::SmartPtr<SymbolAnnotation>(this));
    m_loadEvent = event.get();
    kernel->ManageObject(*event);
    const du::SmartPtr<luk::Structure> structure = PrimaryStructure();
    loader->LoadShape(shape, 0, event, structure ? structure->GetAnchor() : nullptr);
}

void SymbolAnnotation::OnShapeLoaded(bool isLoaded)
{
    m_symbolLoaded = isLoaded;
    DeleteTempDir();
    if (isLoaded) {
        PostObservableEvent(EVENT_MEASUREMENT_DISPLAYED);
        if (m_hasTemplate && !m_templateId.empty() && m_needToCheckForTemplateUpdate) {
            CheckForTemplateUpdate(nullptr);
        }
        if (IsNowhere()) {
            FollowPresentParts(PartTrees(GetShapeScene()));
        }
    }
    CompletePendingEvent(isLoaded ? 0 : 1);
}

bool SymbolAnnotation::SymbolLoadedOK()
{
    m_symbolLoaded = true;
    PostObservableEvent(EVENT_MEASUREMENT_DISPLAYED);
    return true;
}

bool SymbolAnnotation::SymbolLoadFail()
{
    m_symbolLoaded = false;
    DetachScene();
    return true;
}

void SymbolAnnotation::CompletePendingEvent(int status)
{
    const du::SmartPtr<luk::AsyncEvent> event = std::exchange(m_pendingEvent, nullptr);
    if (event && !event->IsComplete()) {
        event->Complete(status);
    }
}

/// For a shape that nothing loads, nothing would tell the end of the load.
void SymbolAnnotation::ReleaseWhoWaitsInVain()
{
    if (!m_pendingEvent || m_loadEvent) {
        return;
    }
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    if (!kernel) {
        return;
    }
    kernel->PostEvent([self = du::SmartPtr<SymbolAnnotation>(this), event = m_pendingEvent] {
        if (self->m_pendingEvent == event && !self->m_loadEvent) {
            self->CompletePendingEvent(1);
        }
    });
}

bool SymbolAnnotation::IsNowhere() const { return m_shapeInstance && !m_shapeInstance->GetLocation().HasPosition(); }

/// A symbol that was read from a document stands nowhere until one of its parts has placed it.
void SymbolAnnotation::FollowPresentParts(const PartTrees& trees)
{
    const du::SmartPtr<luk::ShapeScene> scene = GetShapeScene();
    if (!scene || !IsNowhere()) {
        return;
    }
    // By number, since a load that is done at once comes back here and may change the list.
    for (std::size_t index = 0; index < m_connectedParts.size(); ++index) {
        const du::SmartPtr<luk::Instance> instance = trees.FindPart(m_connectedParts[index].partId);
        const du::SmartPtr<luk::ShapeInstance> part = scene->GetShapeInstance(instance);
        if (part && part.get() != m_shapeInstance.get()) {
            OnShapeInstanceCreate(part, true, true, dg::Location());
        }
    }
}

/// A symbol whose parts are all gone, or that has none but itself, would otherwise stay nowhere for ever. So would one on a
/// node of the service tree that stands for no part.
void SymbolAnnotation::PlaceWithoutParts(const PartTrees& trees)
{
    if (!IsNowhere()) {
        return;
    }
    const bool hasPart = std::ranges::any_of(m_connectedParts, [&](const ConnectedPartInfo& entry) {
        const du::SmartPtr<luk::Instance> instance = trees.FindPart(entry.partId);
        return instance && instance != m_shapeInstance->GetInstance();
    });
    if (!hasPart) {
        MoveTo(m_location);
    }
}

du::SmartPtr<luk::ShapeScene> SymbolAnnotation::GetShapeScene() const
{
    return m_shapeInstance ? m_shapeInstance->GetShapeScene() : nullptr;
}

void SymbolAnnotation::MoveTo(const dg::Location& location)
{
    if (m_shapeInstance && !m_nodeIsForeign) {
        m_shapeInstance->SetLocation(location, false);
    }
}

void SymbolAnnotation::SetSymbolLocation() { MoveTo(m_legacy ? m_location : m_initLocation); }

void SymbolAnnotation::UpdateAnnotationLocation(const dg::Location& location)
{
    MoveTo(location);
    UpdateOffsetWithConnectedParts();
    SetDirty();
}

void SymbolAnnotation::SetCsysPos(dg::DPoint3D& position, bool apply)
{
    m_selectedCsys.SetPosition(position);
    if (apply) {
        CalculateSymbolLocation(m_initLocation, m_partCsys, m_selectedCsys);
        MoveTo(m_initLocation);
    }
}

void SymbolAnnotation::CalculateSymbolLocation(dg::Location& initLocation, dg::Location& partCsys,
                                               dg::Location& selectedCsys, const du::SmartPtr<luk::ShapeView>& view)
{
    if (m_useCurrentOrientation) {
        du::SmartPtr<luk::ShapeView> seenFrom = view;
        const du::SmartPtr<lukapp::LukApp> app = lukapp::LukApp::Get();
        if (!seenFrom && app && app->GetSceneManager()) {
            seenFrom = du::DynamicCast<luk::ShapeView>(app->GetSceneManager()->GetActiveView());
        }
        if (seenFrom) {
            SetSymbolOrientationByPreviewCamera(selectedCsys, *seenFrom);
        }
    } else {
        selectedCsys.SetMat(WithoutScale(selectedCsys.GetMat()));
    }
    dg::DMat44 toPart = partCsys.GetXform();
    if (!toPart.Invert()) {
        toPart = dg::DMat44::IDENTITY;
    }
    initLocation = dg::Location::FromXform(toPart * selectedCsys.GetXform());
}

void SymbolAnnotation::SetSymbolOrientationByPreviewCamera(dg::Location& placement, const luk::ShapeView& view) const
{
    const dg::FMat33 viewRotation = WithoutScale(view.GetCamera().GetLocation().GetMat());
    dg::FMat33 rotation = viewRotation;
    if (m_cameraPreviewLocation.HasPosition()) {
        dg::DMat44 fromPreview =
            dg::Location(WithoutScale(m_cameraPreviewLocation.GetMat()), dg::DPoint3D::ORIGIN).GetXform();
        if (fromPreview.Invert()) {
            rotation = viewRotation * dg::Location::FromXform(fromPreview).GetMat();
        }
    }
    placement.SetMat(rotation);
}

void SymbolAnnotation::ShowAnnotation()
{
    if (m_shapeInstance && !m_nodeIsForeign && !HasHiddenPart(PartTrees(GetShapeScene()))) {
        m_shapeInstance->SetVisibility(true);
    }
}

bool SymbolAnnotation::HasHiddenPart(const PartTrees& trees) const
{
    const du::SmartPtr<luk::ShapeScene> scene = GetShapeScene();
    return scene && std::any_of(m_connectedParts.begin(), m_connectedParts.end(), [&](const ConnectedPartInfo& entry) {
               const auto part = scene->GetShapeInstance(trees.FindPart(entry.partId));
               return part && part.get() != m_shapeInstance.get() && !part->IsVisible();
           });
}

void SymbolAnnotation::ReplaceSceneObserver(const du::SmartPtr<luk::ShapeScene>& shapeScene)
{
    DropSceneObserver();
    if (!shapeScene) {
        return;
    }
    m_sceneObserver = du::MakeCounted<ShapeSceneObserver>(*this, *shapeScene);
    if (const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel()) {
        kernel->ManageObject(*m_sceneObserver);
    }
    RefreshInterest();
    shapeScene->RegisterObserver(m_sceneObserver, m_interest, true);
}

void SymbolAnnotation::DropSceneObserver()
{
    if (const du::SmartPtr<ShapeSceneObserver> observer = std::exchange(m_sceneObserver, nullptr)) {
        observer->LeaveScene();
    }
}

void SymbolAnnotation::DeleteTempDir()
{
    if (!m_tempDir.empty()) {
        du::FileSystem::DeletePath(m_tempDir);
        m_tempDir.clear();
    }
}

} // namespace luannotations
