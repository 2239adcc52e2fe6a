#pragma once

#include <du/SmartPtr.h>
#include <luk/InstanceInterest.h>
#include <luk/Scene.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeSceneObserver.h>
#include <luk/Tree.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace luk
{

/// The scene of a product in space: one shape instance for each instance of its tree, kept in step with it.
///
/// Use: observers register with the id paths that interest them; moving one part of many then costs the observers of that
/// part and no others. An observer without an interest receives everything.
///
/// Ownership: holds its tree, its shape instances, and its observers while they are registered.
///
/// Threads and locks: belongs to the host thread. Observers are called over a snapshot and may come and go meanwhile; one
/// unregistered since is skipped.
///
/// Cost: a change costs the instances that it reaches, and for each of them the observers that it interests.
class LUHOST_API ShapeScene : public Scene
{
public:
    explicit ShapeScene(const du::SmartPtr<Tree>& tree);
    ~ShapeScene() override;

    const du::SmartPtr<Tree>& GetTree() const noexcept { return m_tree; }

    /// @param interest null for everything; by the id path in either tree
    /// @param batched whether OnBeginUpdate and OnEndUpdate are wanted
    /// @return false for null and for one that is registered already. Calls nobody back.
    bool RegisterObserver(const du::SmartPtr<ShapeSceneObserver>& observer,
                          const du::SmartPtr<InstanceInterest>& interest, bool batched);
    /// Tells the observer OnDetached. @return false when it was not registered
    bool UnregisterObserver(const ShapeSceneObserver* observer);

    /// Null for null, for an instance of another tree and for one that was unloaded.
    du::SmartPtr<ShapeInstance> GetShapeInstance(const du::SmartPtr<Instance>& instance) const;
    /// With that of the root.
    std::size_t GetShapeInstanceCount() const noexcept;

    /// Where an instance stands in the scene, unloaded or not. Without a position for null and for an instance of another
    /// tree.
    dg::Location GetInstanceLocation(const du::SmartPtr<Instance>& instance) const;

    /// Takes the geometry of an instance out of the scene, as a viewer does to save memory, and brings it back. Raises
    /// "removed" and "created". What comes back is another shape instance, which stands where the first one would and looks
    /// like it; user data and the selection are gone.
    bool UnloadShapeInstance(const du::SmartPtr<Instance>& instance);
    du::SmartPtr<ShapeInstance> LoadShapeInstance(const du::SmartPtr<Instance>& instance);

    /// Builds the shape instance anew from its node, with its location, visibility and overrides. Raises nothing.
    /// @return false when it is no longer in the scene
    bool RecreateShapeInstance(const du::SmartPtr<ShapeInstance>& instance);
    /// Gives it another shape, or none. Raises "source replaced" and never "removed".
    /// @return false when it is no longer in the scene
    bool ReplaceShapeInstanceShape(const du::SmartPtr<ShapeInstance>& instance, const du::SmartPtr<Shape>& shape);

    /// Frames several changes as one batch. Batches nest; the outermost end tells.
    class LUHOST_API UpdateBatch
    {
    public:
        explicit UpdateBatch(ShapeScene& scene);
        ~UpdateBatch();
        UpdateBatch(const UpdateBatch&) = delete;
        UpdateBatch& operator=(const UpdateBatch&) = delete;

    private:
        du::SmartPtr<ShapeScene> m_scene;
    };

    /// Tests let every observer hear everything, to see that nobody relies on the routing.
    void SetRoutingEnabled(bool enabled) noexcept;

protected:
    void OnClose() override;

private:
    friend class ShapeInstance;
    class Content;
    using TellPart = std::function<void(ShapeSceneObserver&, const du::SmartPtr<ShapeInstance>&)>;

    /// [by the shape instance] What it was set to, and what has changed by it.
    void Place(ShapeInstance& part, const dg::Location& location, bool notify);
    void Show(ShapeInstance& part, bool shown, bool notify);
    void Changed(ShapeInstance& part, bool notify, const TellPart& tell);

    du::SmartPtr<Tree> m_tree;
    std::unique_ptr<Content> m_content;
};

} // namespace luk
