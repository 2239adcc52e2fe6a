#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationEvents.h"
#include "annotations3d/SymbolPartTrees.h"

#include <dg/Traits.h>
#include <dp/ReadLockGuard.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/illustration/SbomTree.h>
#include <luk/Instance.h>
#include <luk/InstanceInterest.h>
#include <luk/Kernel.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeScene.h>
#include <luk/Structure.h>
#include <luk/Tree.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <luloader/Loader.h>

#include <algorithm>
#include <new>
#include <utility>

namespace luannotations
{

namespace
{

/// So many parts are looked through one by one.
constexpr std::size_t kFewParts = 8;

} // namespace

SymbolAnnotation::PartTrees::PartTrees(const du::SmartPtr<luk::ShapeScene>& scene)
{
    if (const auto app = lukapp::illustration::DrellinApp::GetDrellinApp()) {
        m_serviceTree = app->GetSbomTree();
    }
    const auto* const withServiceTree = dynamic_cast<const luk::illustration::Illustration3dScene*>(scene.get());
    if (withServiceTree && withServiceTree->GetSbomTree() != m_serviceTree) {
        m_serviceTreeOfScene = withServiceTree->GetSbomTree();
    }
    if (const du::SmartPtr<luk::World> world = luk::World::GetWorld()) {
        m_tree = world->GetTree();
    }
}

du::SmartPtr<luk::illustration::SbomInstance> SymbolAnnotation::PartTrees::FindServiced(const du::Symbol& path) const
{
    du::SmartPtr<luk::illustration::SbomInstance> found = m_serviceTree ? m_serviceTree->FindInstance(path) : nullptr;
    if (!found && m_serviceTreeOfScene) {
        found = m_serviceTreeOfScene->FindInstance(path);
    }
    return found;
}

du::SmartPtr<luk::Instance> SymbolAnnotation::PartTrees::FindEngineered(const du::Symbol& path) const
{
    return m_tree ? m_tree->FindInstance(path) : nullptr;
}

du::SmartPtr<luk::Instance> SymbolAnnotation::PartTrees::FindPart(const du::Symbol& path) const
{
    const du::SmartPtr<luk::illustration::SbomInstance> serviced = FindServiced(path);
    return serviced ? serviced->GetEbomInstance() : FindEngineered(path);
}

bool SymbolAnnotation::IsSbomTreeIdPath(const du::Symbol& path,
                                        du::SmartPtr<luk::illustration::SbomInstance>& out) const
{
    const du::SmartPtr<luk::illustration::SbomInstance> found = PartTrees(GetShapeScene()).FindServiced(path);
    if (!found) {
        return false;
    }
    out = found;
    return true;
}

bool SymbolAnnotation::IsEbomTreeIdPath(const du::Symbol& path, du::SmartPtr<luk::Instance>& out) const
{
    const du::SmartPtr<luk::Instance> found = PartTrees(nullptr).FindEngineered(path);
    if (!found) {
        return false;
    }
    out = found;
    return true;
}

bool SymbolAnnotation::GetConnectedPartAssembly(const ConnectedPartInfo& entry,
                                                du::SmartPtr<luk::Instance>& assembly) const
{
    assembly = entry.assemblyPartId.IsNull() ? nullptr : PartTrees(GetShapeScene()).FindPart(entry.assemblyPartId);
    return assembly != nullptr;
}

bool SymbolAnnotation::isConnectedPart(const du::Symbol& partId) const
{
    return FindPart(partId) < m_connectedParts.size();
}

bool SymbolAnnotation::isConnectedPart(const du::SmartPtr<luk::ShapeInstance>& part) const
{
    return FindPart(part) < m_connectedParts.size();
}

SymbolAnnotation::PartEntry SymbolAnnotation::GetConnectedPartEntry(const du::SmartPtr<luk::ShapeInstance>& part)
{
    return m_connectedParts.begin() + static_cast<std::ptrdiff_t>(FindPart(part));
}

/// The first entry of that path; the number of entries when there is none.
std::size_t SymbolAnnotation::FindPart(const du::Symbol& path) const
{
    const std::size_t count = m_connectedParts.size();
    if (count > kFewParts) {
        const auto found = m_partIndex.find(path);
        return found == m_partIndex.end() ? count : found->second;
    }
    const auto found = std::find_if(m_connectedParts.begin(), m_connectedParts.end(),
                                    [&path](const ConnectedPartInfo& entry) { return entry.partId == path; });
    return static_cast<std::size_t>(found - m_connectedParts.begin());
}

/// The first entry that names the part by its path in either tree; the number of entries when there is none.
std::size_t SymbolAnnotation::FindPart(const du::SmartPtr<luk::ShapeInstance>& part) const
{
    std::size_t first = m_connectedParts.size();
    if (first == 0 || !part || !part->GetInstance()) {
        return first;
    }
    if (const du::SmartPtr<luk::illustration::SbomInstance> serviced = part->GetInstance()->GetSbomInstance()) {
        first = FindPart(serviced->GetIdPath());
    }
    return std::min(first, FindPart(part->GetInstance()->GetIdPath()));
}

/// Where a part stands, in the frame in which the symbol's own instance is placed.
bool SymbolAnnotation::GetPartLocation(const du::SmartPtr<luk::ShapeInstance>& part, const ConnectedPartInfo& entry,
                                       dg::Location& location) const
{
    const dg::Location current = part->GetLocation();
    du::SmartPtr<luk::Instance> assembly;
    const du::SmartPtr<luk::ShapeScene> scene = part->GetShapeScene();
    if (!scene || scene != GetShapeScene()) {
        return false; // gone while its shape was loading
    }
    const bool hasAssembly = GetConnectedPartAssembly(entry, assembly);
    // A part is nowhere when the assembly that holds it is. Placed in the scene by way of its assembly, it is where its
    // own location says, so that there is nothing to compose.
    if (!current.HasPosition() || (hasAssembly && !scene->GetInstanceLocation(assembly).HasPosition())) {
        return false;
    }
    const dg::DVec3 scale = current.GetMat().GetScale();
    if (!(scale.x > 0.0 && scale.y > 0.0 && scale.z > 0.0)) {
        return false;
    }
    const bool isUnscaled = dg::ApproximateEquality(scale, dg::DVec3(1.0, 1.0, 1.0), dg::Traits::s_EPSILON);
    location = isUnscaled
                   ? current
                   : dg::Location(current.GetMat() * dg::FMat33::Scaling(1.0 / scale.x, 1.0 / scale.y, 1.0 / scale.z),
                                  current.GetPosition());
    return true;
}

void SymbolAnnotation::AddSelectedPart(const du::Symbol& partId, const dg::DPoint3D& lastPos, const dg::DVec3& offset,
                                       const du::Symbol& assemblyPartId)
{
    if (isConnectedPart(partId)) {
        return;
    }
    if (!GetScene() || PartTrees(GetShapeScene()).HaveNode(partId)) {
        AppendPart({partId, assemblyPartId, lastPos, offset});
    }
}

void SymbolAnnotation::AddSelectedPart(const du::SmartPtr<luk::ShapeInstance>& part,
                                       const du::SmartPtr<luk::ShapeScene>& scene,
                                       const du::SmartPtr<luk::Instance>& instance, const dg::DPoint3D& point)
{
    if (!CheckValidInstance(instance)) {
        return;
    }
    const du::SmartPtr<luk::ShapeInstance> picked = part || !scene ? part : scene->GetShapeInstance(instance);
    AppendPickedPart(picked, instance, point);
    UpdateOffsetWithConnectedParts();
    SaveLastConnectPartPos(picked);
}

void SymbolAnnotation::AddSelectedParts(const std::vector<du::SmartPtr<luk::ShapeInstance>>& parts)
{
    for (const du::SmartPtr<luk::ShapeInstance>& part : parts) {
        if (part && CheckValidInstance(part->GetInstance())) {
            AppendPickedPart(part, part->GetInstance(), dg::DPoint3D::BAD);
        }
    }
    UpdateOffsetWithConnectedParts();
    for (const du::SmartPtr<luk::ShapeInstance>& part : parts) {
        SaveLastConnectPartPos(part);
    }
}

void SymbolAnnotation::AppendPickedPart(const du::SmartPtr<luk::ShapeInstance>& picked,
                                        const du::SmartPtr<luk::Instance>& instance, const dg::DPoint3D& point)
{
    const du::SmartPtr<luk::illustration::SbomInstance> serviced = instance->GetSbomInstance();
    const luk::illustration::SbomInstance* const group = serviced ? serviced->GetParent() : nullptr;
    const bool isGroupRoot = group && !group->GetParent();
    const dg::DPoint3D partPosition = picked ? picked->GetLocation().GetPosition() : dg::DPoint3D::BAD;
    AddSelectedPart(serviced ? serviced->GetIdPath() : instance->GetIdPath(), point.IsBad() ? partPosition : point,
                    dg::DVec3(), group && !isGroupRoot ? group->GetIdPath() : du::Symbol());
}

bool SymbolAnnotation::CheckValidInstance(const du::SmartPtr<luk::Instance>& instance) const
{
    const bool isOwnNode = m_shapeInstance && instance && m_shapeInstance->GetInstance().get() == instance.get();
    return instance && instance->GetTree() && instance->GetParent() && !isOwnNode;
}

void SymbolAnnotation::AddConnectedPartsByPath(const std::vector<ConnectedPartInfo>& parts)
{
    if (!m_isAnnotationSymbol) {
        return;
    }
    // The argument may be the list itself, which does not change by it.
    for (const ConnectedPartInfo& part : parts) {
        AddSelectedPart(part.partId, part.lastPos, part.offset, part.assemblyPartId);
    }
}

void SymbolAnnotation::AppendPart(const ConnectedPartInfo& entry)
{
    const std::size_t index = m_connectedParts.size();
    m_connectedParts.push_back(entry);
    try {
        if (index == kFewParts) {
            IndexParts();
        } else if (index > kFewParts) {
            m_partIndex.emplace(entry.partId, index);
        }
    } catch (const std::bad_alloc&) {
        m_connectedParts.pop_back();
        throw;
    }
    m_interest->Add(entry.partId);
}

void SymbolAnnotation::RemoveUnvalidParts() { RemoveUnvalidParts(PartTrees(GetShapeScene())); }

void SymbolAnnotation::RemoveUnvalidParts(const PartTrees& trees)
{
    const std::size_t removed = std::erase_if(
        m_connectedParts, [&trees](const ConnectedPartInfo& entry) { return !trees.HaveNode(entry.partId); });
    if (removed > 0) {
        IndexParts();
        RefreshInterest();
    }
}

void SymbolAnnotation::IndexParts()
{
    m_partIndex.clear();
    for (std::size_t index = 0; m_connectedParts.size() > kFewParts && index < m_connectedParts.size(); ++index) {
        m_partIndex.emplace(m_connectedParts[index].partId, index);
    }
}

void SymbolAnnotation::RefreshInterest()
{
    du::Symbol own;
    if (m_shapeInstance && m_shapeInstance->GetInstance()) {
        own = m_shapeInstance->GetInstance()->GetIdPath();
    }
    m_interest->Retain([&](const du::Symbol& idPath) { return idPath == own || isConnectedPart(idPath); });
    m_interest->Add(own);
    for (const ConnectedPartInfo& entry : m_connectedParts) {
        m_interest->Add(entry.partId);
    }
}

void SymbolAnnotation::UpdateOffsetsSoon()
{
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    if (!kernel || std::exchange(m_offsetsAreDue, true)) {
        return;
    }
    // Many parts load at about the same time; one refresh serves them all.
    kernel->PostAfterEvents([self = du::SmartPtr<SymbolAnnotation>(this)] {
        if (self->m_offsetsAreDue) {
            self->UpdateOffsetWithConnectedParts();
        }
    });
}

void SymbolAnnotation::UpdateOffsetWithConnectedParts()
{
    m_offsetsAreDue = false;
    du::SmartPtr<luk::ShapeScene> scene;
    {
        const dp::ReadLockGuard lock(GetLock());
        scene = GetShapeScene();
    }
    if (!scene || m_connectedParts.empty()) {
        return;
    }
    const PartTrees trees(scene);
    for (std::size_t index = 0; index < m_connectedParts.size(); ++index) {
        UpdateOffset(index, *scene, trees);
    }
}

void SymbolAnnotation::UpdateOffset(std::size_t index, const luk::ShapeScene& scene, const PartTrees& trees)
{
    ConnectedPartInfo& entry = m_connectedParts[index];
    const du::SmartPtr<luk::Instance> instance = trees.FindPart(entry.partId);
    if (!instance) {
        return;
    }
    dg::DPoint3D partPosition = entry.lastPos;
    if (const du::SmartPtr<luk::ShapeInstance> part = scene.GetShapeInstance(instance)) {
        dg::Location location;
        if (!m_shapeInstance || !GetPartLocation(part, entry, location)) {
            // Once for each time that the part appears: a part whose location always fails would be loaded for ever.
            if (m_triedParts.insert(entry.partId).second) {
                OnShapeInstanceCreate(part, false, false, dg::Location());
            }
            return;
        }
        partPosition = location.GetPosition();
    }
    const dg::DVec3 offset =
        m_shapeInstance ? m_shapeInstance->GetLocation().GetPosition() - partPosition : dg::DVec3::BAD;
    if (!offset.IsBad()) {
        entry.offset = offset;
    }
}

void SymbolAnnotation::SaveLastConnectPartPos(const du::SmartPtr<luk::ShapeInstance>& part)
{
    const PartEntry entry = GetConnectedPartEntry(part);
    dg::Location location;
    if (entry != m_connectedParts.end() && GetPartLocation(part, *entry, location)) {
        entry->lastPos = location.GetPosition();
    }
}

void SymbolAnnotation::ApplyDeltaByConnectedPart(const du::SmartPtr<luk::ShapeInstance>& part)
{
    const PartEntry entry = GetConnectedPartEntry(part);
    dg::Location partLocation;
    // A symbol attached to itself would run away from itself.
    if (entry == m_connectedParts.end() || !m_shapeInstance || part.get() == m_shapeInstance.get() ||
        !GetPartLocation(part, *entry, partLocation) || std::exchange(m_isFollowing, true)) {
        return;
    }
    const dg::DVec3 delta = partLocation.GetPosition() - entry->lastPos;
    dg::Location location = m_shapeInstance->GetLocation();
    if (!location.HasPosition() && !entry->offset.IsBad()) {
        location.SetPosition(partLocation.GetPosition() + entry->offset);
        MoveTo(location);
    } else if (!delta.IsBad()) {
        location.SetPosition(location.GetPosition() + delta);
        MoveTo(location);
    }
    entry->lastPos = partLocation.GetPosition();
    m_isFollowing = false;
}

void SymbolAnnotation::UpdateSymbolLocationByOffset(const du::SmartPtr<luk::ShapeInstance>& part,
                                                    const dg::Location& location)
{
    const PartEntry entry = GetConnectedPartEntry(part);
    dg::Location partLocation;
    if (entry == m_connectedParts.end() || !m_shapeInstance || part.get() == m_shapeInstance.get() ||
        !GetPartLocation(part, *entry, partLocation) || entry->offset.IsBad()) {
        return;
    }
    dg::Location placement = std::exchange(m_legacy, false) ? m_location : m_shapeInstance->GetLocation();
    if (location.HasPosition()) {
        placement = location;
    }
    // Where it is already by that offset it stays, free of another rounding.
    if (!(placement.GetPosition() - partLocation.GetPosition() == entry->offset)) {
        placement.SetPosition(partLocation.GetPosition() + entry->offset);
    }
    MoveTo(placement);
    entry->lastPos = partLocation.GetPosition();
}

void SymbolAnnotation::OnShapeInstanceCreate(const du::SmartPtr<luk::ShapeInstance>& part, bool mode, bool second,
                                             const dg::Location& location)
{
    LoadConnectedPartShapeData(part, du::MakeCounted<LoadingConnectPartEvent>(du::SmartPtr<SymbolAnnotation>(this),
                                                                              part, mode, second, location));
}

void SymbolAnnotation::LoadConnectedPartShapeData(const du::SmartPtr<luk::ShapeInstance>& part,
                                                  const du::SmartPtr<luk::AsyncEvent>& event)
{
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    if (!kernel || !part || !event) {
        return;
    }
    kernel->ManageObject(*event);
    const du::SmartPtr<luk::Shape> shape = part->GetShape();
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    if (shape && !shape->IsLoaded() && loader) {
        const du::SmartPtr<luk::Instance>& instance = part->GetInstance();
        luk::Tree* const tree = instance ? instance->GetTree() : nullptr;
        loader->LoadShape(shape, 0, event, tree && tree->GetStructure() ? tree->GetStructure()->GetAnchor() : nullptr);
    } else {
        kernel->PostEvent(event);
    }
}

} // namespace luannotations
