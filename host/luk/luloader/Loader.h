#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/Anchor.h>
#include <luk/AsyncEvent.h>
#include <luk/Image.h>
#include <luk/Object.h>
#include <luk/Shape.h>
#include <luloader/ImageDecoder.h>
#include <luloader/ShapeReader.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace luloader
{

/// Reads and decodes files on worker threads and delivers them from the kernel's event pump.
///
/// Use: `LoadImage(image, event, type)` answers at once; later, from `Kernel::ProcessEvents`, the picture is put into the
/// image and the event is completed, with status 0 or, after a failure, 1 and the reason in `Image::GetProblem`. A failed
/// load leaves the image without a picture. LoadShape does the same for a shape.
///
/// Ownership: holds image or shape and event until they are delivered, and the kernel of its first load until it stops. Workers hold
/// neither, so that nothing of them ends on a worker. Without a kernel, or once the loader has stopped or the kernel was
/// closed, events are released without having been completed.
///
/// Threads: calls belong to the host thread. Nothing is ever delivered from inside a call or on a worker. Workers start
/// with the first loads.
///
/// Errors: a file that is missing, no regular file, too large or of no known format fails as a load does, in its event; so
/// does one whose picture finds no memory. A load that cannot be asked for, or delivered, for lack of memory is told by
/// std::bad_alloc, from LoadImage, LoadShape and WaitForLoads: what was not asked for never comes, and what was finished but
/// not delivered comes with the next WaitForLoads.
///
/// Cost: a file that is loaded several times is read and decoded once, for as long as it stays the same and its picture or
/// mesh is still in memory; the same bytes at another place are read but not decoded again. Unless the host waits for loads,
/// they are gathered for some milliseconds before they are read: many that are asked for one after the other wake nobody, and
/// those of one file are one piece of work. Pictures and meshes that nobody asked for lately are let go once the ones or the
/// others take more than a fixed number of bytes.
class LUHOST_API Loader : public luk::Object, public virtual du::RefCounted
{
public:
    struct Config {
        std::size_t workers = 0; ///< 0: as many as the machine has cores, four at most
        std::size_t maximumFileBytes = std::size_t{256} << 20;
        std::size_t maximumCachedBytes = std::size_t{512} << 20;
        std::vector<std::shared_ptr<const ImageDecoder>> decoders;    ///< asked in this order
        std::vector<std::shared_ptr<const ShapeReader>> shapeReaders; ///< in this order, until one gives a mesh
    };

    explicit Loader(Config config);
    ~Loader() override;

    /// Null outside a session.
    static du::SmartPtr<Loader> GetLoader();
    /// [host thread] For the session, and for tests that stand in for one.
    static void SetLoader(const du::SmartPtr<Loader>& loader);

    /// Loads of one image are delivered in the order in which they were asked for, so that the last one stays.
    /// @param image its URL says what to load: "file:///" and a path of this system, or a plain path
    /// @param event completed when the load is done; null when nobody waits
    /// @param type word for the kind of picture, empty for any; what the file holds decides
    void LoadImage(const du::SmartPtr<luk::Image>& image, const du::SmartPtr<luk::AsyncEvent>& event,
                   const du::Symbol& type);

    /// A shape that is loaded already completes like any other, and nothing is read for it.
    /// @param shape its path says what to load: "file:///" and a path of this system, or a plain path
    /// @param flags kept for callers, without effect
    /// @param event completed when the load is done, with status 0 or, after a failure, 1 and the reason in
    /// `Shape::GetProblem`; null when nobody waits
    /// @param anchor says where a file is that is named without a folder; null for the working folder
    void LoadShape(const du::SmartPtr<luk::Shape>& shape, unsigned int flags,
                   const du::SmartPtr<luk::AsyncEvent>& event, const du::SmartPtr<luk::Anchor>& anchor);

    /// Loads that are not delivered yet.
    std::size_t GetPendingCount() const noexcept;
    /// Pictures that were decoded and shapes that were read since the loader was made.
    std::size_t GetDecodeCount() const noexcept;

    /// Delivers until nothing is pending any more, waiting for the workers without turning in circles. Loads that a
    /// delivery asks for are waited for too.
    /// @param onProgress called now and then with the number still pending; answers false to stop waiting. May be empty.
    /// @return false when it was stopped, and when it cannot deliver: inside an event, or on another thread
    bool WaitForLoads(const std::function<bool(std::size_t)>& onProgress = {});

    /// Lets the workers end after what each is at, waits for them, and drops what was not delivered: its events are
    /// released without having been completed. Loads asked for later are dropped likewise.
    void Stop();

private:
    class Work;
    std::shared_ptr<Work> m_work; ///< shared with events that the kernel has not come to
};

} // namespace luloader
