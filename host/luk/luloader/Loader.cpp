#include <du/PlaceMap.h>
#include <luk/CurrentHandle.h>
#include <luk/Kernel.h>
#include <luloader/Loader.h>
#include <luloader/PictureCache.h>
#include <luloader/RegularFile.h>
#include <luloader/ShapeCache.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

namespace luloader
{

namespace
{

constexpr int kFailed = 1;

/// So long loads are gathered before they are read. What is asked for meanwhile costs no waking, and loads of one file
/// become one job.
constexpr std::chrono::milliseconds kGathering{20};

/// So short that a string of it needs no memory.
constexpr const char* kOutOfMemory = "out of memory";
constexpr const char* kNoThread = "the system gives no thread to read it with";

enum class Kind { Picture, Shape };

/// What is to be loaded, as it was asked for.
struct Source {
    Kind kind = Kind::Picture;
    du::Symbol name;
    const luk::Anchor* anchor = nullptr;

    /// A shape without a folder is one of the files that belong to the document.
    bool IsAnchored() const
    {
        return anchor && kind == Kind::Shape && name.GetText().find_first_of("/\\") == std::string::npos;
    }

    std::string GetPath() const
    {
        if (!IsAnchored()) {
            return PathFromURL(name.GetText());
        }
        du::Symbol anchored;
        return anchor->GetURLForFileSource(name, anchored, false) ? anchored.GetText() : std::string();
    }
};

/// One reading of a file, for everybody who asked before it began.
struct Job {
    explicit Job(const Source& source) : kind(source.kind), path(source.GetPath()) {}

    const Kind kind;
    const std::string path;
    du::SmartPtr<luk::ImageData> picture;
    du::SmartPtr<luk::Mesh> mesh;
    std::string problem;
    std::string lane;                 ///< of those that may stand in for each other
    du::Symbol name;                  ///< by which it can be joined; null when it cannot
    std::atomic<bool> isTaken{false}; ///< by a worker, which may read from now on

    bool IsDone() const { return picture || mesh; }

    void Fail(const char* reason) noexcept
    {
        picture = nullptr;
        mesh = nullptr;
        try {
            problem = reason;
        } catch (const std::bad_alloc&) {
            problem = kOutOfMemory;
        }
    }
};

/// Jobs on their way. They pass from list to list without a further allocation, since a worker has nobody to tell that it
/// got none.
using Jobs = std::list<std::shared_ptr<Job>>;

struct Request {
    du::SmartPtr<luk::Image> image;
    du::SmartPtr<luk::Shape> shape;
    du::SmartPtr<luk::AsyncEvent> event;

    void Deliver(const Job& job) const
    {
        if (image) {
            image->SetImageData(job.picture);
            image->SetProblem(CopyOf(job.problem));
        }
        if (shape) {
            if (job.mesh) {
                shape->SetMesh(job.mesh);
            }
            shape->SetProblem(CopyOf(job.problem));
        }
        if (event) {
            event->Complete(job.IsDone() ? 0 : kFailed);
        }
    }

private:
    static std::string CopyOf(const std::string& problem) noexcept
    {
        try {
            return problem;
        } catch (const std::bad_alloc&) {
            return kOutOfMemory;
        }
    }
};

/// One who waits for a file to be read.
struct Waiting {
    Request request;
    std::shared_ptr<const Job> result; ///< null until it has been read
    std::shared_ptr<Waiting> next;     ///< of those who wait with the same image
};

/// Those who wait with one image, in the order in which they asked, which decides what it shows in the end.
class ImageQueue
{
public:
    ImageQueue() = default;
    ~ImageQueue()
    {
        while (m_first) {
            TakeFirst();
        }
    }
    ImageQueue(ImageQueue&&) noexcept = default;
    ImageQueue& operator=(ImageQueue&&) noexcept = default;

    void Append(const std::shared_ptr<Waiting>& waiting) noexcept
    {
        (m_first ? m_last->next : m_first) = waiting;
        m_last = waiting.get();
    }

    bool IsEmpty() const noexcept { return !m_first; }
    bool IsFirstRead() const noexcept { return m_first->result != nullptr; }

    std::shared_ptr<Waiting> TakeFirst() noexcept
    {
        std::shared_ptr<Waiting> taken = std::move(m_first);
        m_first = std::move(taken->next);
        return taken;
    }

private:
    std::shared_ptr<Waiting> m_first;
    Waiting* m_last = nullptr; ///< of one that is not empty
};

/// Of those that may stand in for each other.
std::string LaneOf(Kind kind, const std::string& path)
{
    std::string lane;
    lane.reserve(path.size() + 1);
    lane.append(1, kind == Kind::Shape ? 's' : 'p').append(path);
    return lane;
}

std::size_t NumberOfWorkers(std::size_t wanted)
{
    constexpr std::size_t kAtMost = 4;
    return wanted > 0 ? wanted : std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kAtMost);
}

} // namespace

class Loader::Work : public std::enable_shared_from_this<Loader::Work>
{
public:
    explicit Work(Config config)
        : m_config(std::move(config)), m_maximumWorkers(NumberOfWorkers(m_config.workers)),
          m_cache(m_config.maximumCachedBytes), m_meshes(m_config.maximumCachedBytes)
    {
    }

    /// @param mesh that is there already, so that nothing has to be read
    void Load(Request request, const Source& source, const du::SmartPtr<luk::Mesh>& mesh);
    bool Wait(const std::function<bool(std::size_t)>& onProgress);
    void Stop();

    std::size_t GetPendingCount() const noexcept { return IsCutOff() ? 0 : m_pending; }
    std::size_t GetDecodeCount() const noexcept { return m_decodes; }

private:
    class Parcel;
    class DecodingTurn;
    class HostWaiting;
    /// What goes on with one path of one kind: at most one job runs and one waits.
    struct Lane {
        std::shared_ptr<Job> waiting;
        Jobs held; ///< the waiting one while another runs
        bool isRunning = false;
    };

    using JobsByName = du::PlaceMap<du::Symbol, std::shared_ptr<Job>>;

    /// Nothing will be delivered any more.
    bool IsCutOff() const noexcept { return m_stopped || m_kernelClosed; }
    void RegisterAndPost(const std::shared_ptr<Waiting>& waiting, std::shared_ptr<Job> job);
    bool JoinByName(const std::shared_ptr<Waiting>& waiting, const Source& source);
    void JoinOrEnqueue(const std::shared_ptr<Waiting>& waiting, const Source& source);
    void Enqueue(const std::shared_ptr<Waiting>& waiting, Jobs& one);
    JobsByName& GetJobsByName(Kind kind) { return kind == Kind::Shape ? m_shapeJobs : m_pictureJobs; }
    void ForgetName(const Job& job);
    void Register(const Job& job, const std::shared_ptr<Waiting>& waiting);
    bool HaveWorker();
    void Deliver(const std::shared_ptr<const Job>& job);
    void DeliverInTurn(const std::shared_ptr<Waiting>& waiting);
    void DeliverOne(Waiting& waiting);
    bool DeliverSome();
    void DropRequests();

    void RunWorker();
    Jobs TakeJob();
    void Gather(std::unique_lock<std::mutex>& lock);
    void NoteNewJob();
    void FinishJob(const Job& job);
    bool TryToPost(const std::shared_ptr<Job>& job);
    void Post(Jobs& one);
    void PostAgain();
    void NoteKernelClosed();
    void ReadPicture(Job& job);
    void ReadContent(const RegularFile& file, PictureCache::File& state, Job& job);
    void Decode(std::string_view bytes, Job& job);
    void ReadShape(Job& job);
    void ReadMesh(const RegularFile& file, Job& job);
    void AskReaders(Job& job);

    const Config m_config;
    const std::size_t m_maximumWorkers;

    // Of the host thread; the kernel is set before the first worker starts and stays until the last has ended.
    const std::thread::id m_hostThread = std::this_thread::get_id();
    du::SmartPtr<luk::Kernel> m_kernel;
    du::PlaceMap<const Job*, std::vector<std::shared_ptr<Waiting>>> m_requests;
    du::PlaceMap<const luk::Image*, ImageQueue> m_requestsOfImage;
    JobsByName m_pictureJobs; ///< the last one of each name, until it is delivered
    JobsByName m_shapeJobs;
    std::size_t m_pending = 0;
    std::size_t m_deliveries = 0;
    bool m_isDelivering = false;
    bool m_lacksMemory = false; ///< somebody could not take what was delivered
    bool m_stopped = false;
    std::vector<std::thread> m_workers;

    std::atomic<std::size_t> m_decodes{0};
    std::atomic<bool> m_kernelClosed{false};

    std::mutex m_mutex; ///< guards what follows
    std::condition_variable m_roundChanged;
    std::condition_variable m_jobsChanged; ///< for the one that gathers
    std::condition_variable m_posted;
    std::condition_variable m_decoded;
    bool m_isStopping = false;
    bool m_isGathering = false;   ///< one worker
    bool m_isJobAwaited = false;  ///< by the one that gathers, which does not look by itself
    bool m_isHostWaiting = false; ///< so that what comes is read at once
    std::size_t m_postCount = 0;
    Jobs m_jobs;     ///< of the next round
    Jobs m_round;    ///< to be taken now
    Jobs m_unposted; ///< finished, but the kernel had no memory to be told so
    std::unordered_map<std::string, Lane, du::TextHash, std::equal_to<>> m_lanes;
    PictureCache m_cache;
    ShapeCache m_meshes;
    std::set<std::size_t> m_decoding; ///< digests
};

/// A finished job on its way through the kernel, which drops it when it is closed.
class Loader::Work::Parcel
{
public:
    Parcel(std::shared_ptr<Work> work, std::shared_ptr<Job> job) : m_work(std::move(work)), m_job(std::move(job)) {}
    ~Parcel()
    {
        if (m_job) {
            m_work->NoteKernelClosed();
        }
    }
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    void Deliver() { m_work->Deliver(std::exchange(m_job, nullptr)); }
    void Forget() noexcept { m_job = nullptr; }

private:
    std::shared_ptr<Work> m_work;
    std::shared_ptr<Job> m_job;
};

/// Lets one worker at a time decode the same bytes, so that the others find the picture.
class Loader::Work::DecodingTurn
{
public:
    DecodingTurn(Work& work, std::size_t digest) : m_work(work), m_digest(digest)
    {
        std::unique_lock lock(m_work.m_mutex);
        m_work.m_decoded.wait(lock, [&] { return m_work.m_decoding.insert(digest).second; });
    }
    ~DecodingTurn()
    {
        const std::lock_guard lock(m_work.m_mutex);
        m_work.m_decoding.erase(m_digest);
        m_work.m_decoded.notify_all();
    }
    DecodingTurn(const DecodingTurn&) = delete;
    DecodingTurn& operator=(const DecodingTurn&) = delete;

private:
    Work& m_work;
    std::size_t m_digest;
};

/// While the host waits for loads, whoever works has nothing to gather.
class Loader::Work::HostWaiting
{
public:
    explicit HostWaiting(Work& work) : m_work(work) { Set(true); }
    ~HostWaiting() { Set(false); }
    HostWaiting(const HostWaiting&) = delete;
    HostWaiting& operator=(const HostWaiting&) = delete;

private:
    void Set(bool isWaiting)
    {
        const std::lock_guard lock(m_work.m_mutex);
        m_work.m_isHostWaiting = isWaiting;
        m_work.m_jobsChanged.notify_one();
    }

    Work& m_work;
};

void Loader::Work::Load(Request request, const Source& source, const du::SmartPtr<luk::Mesh>& mesh)
{
    const du::SmartPtr<luk::Kernel> kernel = luk::Kernel::GetKernel();
    if (!kernel || IsCutOff()) {
        return;
    }
    if (!m_kernel) {
        m_kernel = kernel;
    }
    const auto waiting = std::make_shared<Waiting>(Waiting{std::move(request), nullptr, nullptr});
    if (!mesh && HaveWorker()) {
        if (!JoinByName(waiting, source)) {
            JoinOrEnqueue(waiting, source);
        }
        return;
    }
    auto job = std::make_shared<Job>(source);
    job->mesh = mesh;
    if (!mesh) {
        job->problem = kNoThread;
    }
    RegisterAndPost(waiting, std::move(job));
}

void Loader::Work::RegisterAndPost(const std::shared_ptr<Waiting>& waiting, std::shared_ptr<Job> job)
{
    Jobs one{std::move(job)};
    Register(*one.front(), waiting);
    Post(one);
}

/// The short way, for the many that ask for few files: neither a path is formed nor a lock taken. A worker that takes the
/// job meanwhile reads after this load was asked for.
bool Loader::Work::JoinByName(const std::shared_ptr<Waiting>& waiting, const Source& source)
{
    const std::shared_ptr<Job>* const known = GetJobsByName(source.kind).Find(source.name);
    if (!known || (*known)->isTaken || source.IsAnchored()) {
        return false;
    }
    Register(**known, waiting);
    return true;
}

/// A job that runs already may have read the file before it last changed, so that it is too late to join it.
void Loader::Work::JoinOrEnqueue(const std::shared_ptr<Waiting>& waiting, const Source& source)
{
    Jobs one{std::make_shared<Job>(source)};
    Job& job = *one.front();
    job.lane = LaneOf(job.kind, job.path);
    if (!source.name.IsNull() && !source.IsAnchored()) {
        *GetJobsByName(source.kind).TryEmplace(source.name).first = one.front();
        job.name = source.name;
    }
    try {
        Enqueue(waiting, one);
    } catch (const std::bad_alloc&) {
        ForgetName(job);
        throw;
    }
}

/// @param one a new job, which is not needed when its lane has one that waits
void Loader::Work::Enqueue(const std::shared_ptr<Waiting>& waiting, Jobs& one)
{
    const std::shared_ptr<Job> job = one.front();
    const std::lock_guard lock(m_mutex);
    const auto [place, isNew] = m_lanes.try_emplace(job->lane);
    Lane& lane = place->second;
    if (lane.waiting) {
        Register(*lane.waiting, waiting);
        ForgetName(*job);
        return;
    }
    try {
        Register(*job, waiting);
    } catch (const std::bad_alloc&) {
        if (isNew) {
            m_lanes.erase(place);
        }
        throw;
    }
    lane.waiting = job;
    if (lane.isRunning) {
        lane.held.splice(lane.held.end(), one);
    } else {
        m_jobs.splice(m_jobs.end(), one);
        NoteNewJob();
    }
}

/// Writes down who waits for a job, whole or not at all.
void Loader::Work::Register(const Job& job, const std::shared_ptr<Waiting>& waiting)
{
    const luk::Image* const image = waiting->request.image.get();
    std::vector<std::shared_ptr<Waiting>>& requests = *m_requests.TryEmplace(&job).first;
    try {
        requests.push_back(waiting);
        if (image) {
            m_requestsOfImage.TryEmplace(image).first->Append(waiting);
        }
    } catch (const std::bad_alloc&) {
        std::erase(requests, waiting);
        if (requests.empty()) {
            m_requests.Take(&job);
        }
        throw;
    }
    ++m_pending;
}

void Loader::Work::ForgetName(const Job& job)
{
    JobsByName& jobs = GetJobsByName(job.kind);
    const std::shared_ptr<Job>* const known = jobs.Find(job.name);
    if (known && known->get() == &job) {
        jobs.Take(job.name);
    }
}

/// Starts one more for each load, up to the maximum.
bool Loader::Work::HaveWorker()
{
    if (m_workers.size() < m_maximumWorkers) {
        try {
            m_workers.emplace_back([this] { RunWorker(); });
        } catch (const std::system_error&) {
            // Those that there are do the work.
        }
    }
    return !m_workers.empty();
}

void Loader::Work::Deliver(const std::shared_ptr<const Job>& job)
{
    ForgetName(*job);
    const std::vector<std::shared_ptr<Waiting>> requests = m_requests.Take(job.get());
    m_isDelivering = true;
    for (const std::shared_ptr<Waiting>& waiting : requests) {
        if (IsCutOff()) {
            break;
        }
        waiting->result = job;
        DeliverInTurn(waiting);
    }
    m_isDelivering = false;
    if (std::exchange(m_lacksMemory, false)) {
        throw std::bad_alloc();
    }
}

/// What an image asked for later waits for what it asked for before.
void Loader::Work::DeliverInTurn(const std::shared_ptr<Waiting>& waiting)
{
    const du::SmartPtr<luk::Image> image = waiting->request.image;
    if (!image) {
        DeliverOne(*waiting);
        return;
    }
    while (!IsCutOff()) {
        ImageQueue* const queue = m_requestsOfImage.Find(image.get());
        if (!queue || !queue->IsFirstRead()) {
            return;
        }
        const std::shared_ptr<Waiting> first = queue->TakeFirst();
        if (queue->IsEmpty()) {
            m_requestsOfImage.Take(image.get());
        }
        DeliverOne(*first);
    }
}

void Loader::Work::DeliverOne(Waiting& waiting)
{
    --m_pending;
    ++m_deliveries;
    try {
        std::exchange(waiting.request, {}).Deliver(*waiting.result);
    } catch (const std::bad_alloc&) {
        m_lacksMemory = true; // told when all have had theirs, who may need less
    }
}

bool Loader::Work::Wait(const std::function<bool(std::size_t)>& onProgress)
{
    using namespace std::chrono_literals;
    if (std::this_thread::get_id() != m_hostThread || m_isDelivering) {
        return false;
    }
    const HostWaiting isWaiting(*this);
    bool hasRest = true; // what the last deliveries may have posted
    while (m_pending > 0 || hasRest) {
        hasRest = m_pending > 0;
        std::unique_lock lock(m_mutex);
        const std::size_t postCount = m_postCount;
        lock.unlock();
        PostAgain();
        const std::size_t deliveries = m_deliveries;
        const bool delivered = DeliverSome();
        if (m_kernelClosed) {
            DropRequests();
        }
        if (!delivered || IsCutOff() || (onProgress && !onProgress(m_pending))) {
            return false;
        }
        if (m_pending > 0 && m_deliveries == deliveries) {
            // Briefly while others keep posting: what they post may be on the way to a load.
            const auto pause = m_kernel->GetPendingEventCount() > 0 ? 1ms : 50ms;
            lock.lock();
            m_posted.wait_for(lock, pause, [&] { return m_postCount != postCount || m_kernelClosed; });
        }
    }
    return !IsCutOff();
}

/// @return false when the kernel delivers nothing although there is something, as inside an event
bool Loader::Work::DeliverSome()
{
    const du::SmartPtr<luk::Kernel> kernel = m_kernel;
    return !kernel || kernel->GetPendingEventCount() == 0 || kernel->ProcessEvents() > 0;
}

void Loader::Work::Stop()
{
    m_stopped = true;
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
        m_jobs.clear();
        m_round.clear();
        m_unposted.clear();
        m_lanes.clear();
        m_roundChanged.notify_all();
        m_jobsChanged.notify_all();
    }
    for (std::thread& worker : std::exchange(m_workers, {})) {
        worker.join();
    }
    m_cache.Clear();
    m_meshes.Clear();
    m_kernel = nullptr;
    DropRequests();
}

/// The requests end last and with nothing locked, since their end may ask for further loads.
void Loader::Work::DropRequests()
{
    m_pending = 0;
    const auto requests = std::exchange(m_requests, {});
    const auto requestsOfImages = std::exchange(m_requestsOfImage, {});
    m_pictureJobs = {};
    m_shapeJobs = {};
}

void Loader::Work::RunWorker()
{
    for (;;) {
        Jobs one = TakeJob();
        if (one.empty()) {
            return;
        }
        const std::shared_ptr<Job> job = one.front();
        try {
            job->kind == Kind::Shape ? ReadShape(*job) : ReadPicture(*job);
        } catch (const std::bad_alloc&) {
            job->Fail(kOutOfMemory);
        } catch (...) {
            job->Fail("it cannot be decoded");
        }
        Post(one);
        FinishJob(*job);
    }
}

/// Waits for one. @return an empty list when there will be none
Jobs Loader::Work::TakeJob()
{
    Jobs one;
    std::unique_lock lock(m_mutex);
    while (!m_isStopping && m_round.empty()) {
        m_isGathering ? m_roundChanged.wait(lock) : Gather(lock);
    }
    if (m_isStopping) {
        return one;
    }
    one.splice(one.end(), m_round, m_round.begin());
    one.front()->isTaken = true;
    if (const auto lane = m_lanes.find(one.front()->lane); lane != m_lanes.end()) {
        lane->second.waiting = nullptr;
        lane->second.isRunning = true;
    }
    return one;
}

/// Makes the next round of what comes within a while, or of what comes first when nothing does.
///
/// *Rationale:* ten thousand symbols ask for a hundred files one after the other. Were each request served at once, a file
/// would be read again and again, since none may have what was read before it asked.
void Loader::Work::Gather(std::unique_lock<std::mutex>& lock)
{
    m_isGathering = true;
    m_jobsChanged.wait_for(lock, kGathering, [this] { return m_isStopping || m_isHostWaiting; });
    m_isJobAwaited = true;
    m_jobsChanged.wait(lock, [this] { return m_isStopping || !m_jobs.empty(); });
    m_isJobAwaited = false;
    m_isGathering = false;
    m_round.splice(m_round.end(), m_jobs);
    m_roundChanged.notify_all();
}

/// [locked]
void Loader::Work::NoteNewJob()
{
    if (m_isJobAwaited) {
        m_jobsChanged.notify_one();
    }
}

void Loader::Work::FinishJob(const Job& job)
{
    const std::lock_guard lock(m_mutex);
    const auto lane = m_lanes.find(job.lane);
    if (lane == m_lanes.end()) {
        return;
    }
    lane->second.isRunning = false;
    if (lane->second.waiting) {
        m_jobs.splice(m_jobs.end(), lane->second.held);
        NoteNewJob();
    } else {
        m_lanes.erase(lane);
    }
}

bool Loader::Work::TryToPost(const std::shared_ptr<Job>& job)
{
    std::shared_ptr<Parcel> parcel;
    try {
        parcel = std::make_shared<Parcel>(shared_from_this(), job);
        m_kernel->PostEvent([parcel] { parcel->Deliver(); });
    } catch (const std::bad_alloc&) {
        if (parcel) {
            parcel->Forget();
        }
        return false;
    }
    return true;
}

/// Without memory for it the job is kept for whoever waits for loads: see PostAgain.
void Loader::Work::Post(Jobs& one)
{
    const bool isPosted = TryToPost(one.front());
    const std::lock_guard lock(m_mutex);
    if (!isPosted && !m_isStopping) {
        m_unposted.splice(m_unposted.end(), one);
    }
    ++m_postCount;
    m_posted.notify_one();
}

void Loader::Work::PostAgain()
{
    Jobs unposted;
    {
        const std::lock_guard lock(m_mutex);
        unposted.swap(m_unposted);
    }
    while (!unposted.empty()) {
        if (!TryToPost(unposted.front())) {
            const std::lock_guard lock(m_mutex);
            m_unposted.splice(m_unposted.begin(), unposted);
            throw std::bad_alloc();
        }
        unposted.pop_front();
    }
}

void Loader::Work::NoteKernelClosed()
{
    m_kernelClosed = true;
    const std::lock_guard lock(m_mutex);
    m_posted.notify_one();
}

void Loader::Work::ReadPicture(Job& job)
{
    const RegularFile file(job.path);
    PictureCache::File state{job.path, file.GetIdentity(), false};
    if (!file.IsOpen()) {
        job.problem = RegularFile::Explain(job.path);
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        job.picture = m_cache.FindFile(state);
    }
    if (!job.picture) {
        ReadContent(file, state, job);
    }
}

void Loader::Work::ReadContent(const RegularFile& file, PictureCache::File& state, Job& job)
{
    auto bytes = std::make_shared<std::string>();
    if (!file.Read(m_config.maximumFileBytes, *bytes, job.problem)) {
        return;
    }
    FileIdentity afterwards;
    state.isSettled = file.Identify(afterwards) && afterwards == state.identity && afterwards.IsSettled();
    const PictureCache::Content content{du::TextHash()(*bytes), std::move(bytes)};

    const DecodingTurn turn(*this, content.digest);
    {
        const std::lock_guard lock(m_mutex);
        job.picture = m_cache.FindContent(content, state);
    }
    if (job.picture) {
        return;
    }
    Decode(*content.bytes, job);
    if (job.picture) {
        const std::lock_guard lock(m_mutex);
        m_cache.Add(content, state, job.picture);
    }
}

void Loader::Work::Decode(std::string_view bytes, Job& job)
{
    const auto decoder = std::find_if(m_config.decoders.begin(), m_config.decoders.end(),
                                      [&](const auto& candidate) { return candidate->Recognises(bytes); });
    if (decoder == m_config.decoders.end()) {
        job.problem = "it is no picture of a known format";
        return;
    }
    ++m_decodes;
    job.picture = (*decoder)->Decode(bytes, job.problem);
    if (job.picture) {
        job.problem.clear();
    } else if (job.problem.empty()) {
        job.problem = "it is damaged";
    }
}

void Loader::Work::ReadShape(Job& job)
{
    const RegularFile file(job.path);
    if (!file.IsOpen()) {
        job.problem = RegularFile::Explain(job.path);
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        job.mesh = m_meshes.FindFile(job.path, file.GetIdentity());
    }
    if (!job.mesh) {
        ReadMesh(file, job);
    }
}

/// Readers open the file by themselves, so that the mesh is of the bytes seen here only if these are still the same
/// afterwards.
void Loader::Work::ReadMesh(const RegularFile& file, Job& job)
{
    std::string bytes;
    if (!file.Read(m_config.maximumFileBytes, bytes, job.problem)) {
        return;
    }
    const ShapeCache::Content content(bytes);
    std::string().swap(bytes);

    const DecodingTurn turn(*this, content.digest);
    {
        const std::lock_guard lock(m_mutex);
        job.mesh = m_meshes.FindContent(content, job.path, file.GetIdentity());
    }
    if (job.mesh) {
        return;
    }
    AskReaders(job);
    const RegularFile afterwards(job.path);
    std::string problem;
    if (job.mesh && afterwards.IsOpen() && afterwards.Read(m_config.maximumFileBytes, bytes, problem) &&
        ShapeCache::Content(bytes) == content) {
        const std::lock_guard lock(m_mutex);
        m_meshes.Add(content, job.path, file.GetIdentity(), job.mesh);
    }
}

void Loader::Work::AskReaders(Job& job)
{
    job.problem = "there is nobody to read shapes";
    ++m_decodes;
    for (const auto& reader : m_config.shapeReaders) {
        job.problem.clear();
        job.mesh = reader->Read(job.path, job.problem);
        if (job.mesh) {
            job.problem.clear();
            return;
        }
    }
    if (job.problem.empty()) {
        job.problem = "it is damaged";
    }
}

Loader::Loader(Config config) : m_work(std::make_shared<Work>(std::move(config))) {}

Loader::~Loader() { Stop(); }

du::SmartPtr<Loader> Loader::GetLoader() { return luk::CurrentHandle<Loader>::GetSlot().Get(); }

void Loader::SetLoader(const du::SmartPtr<Loader>& loader) { luk::CurrentHandle<Loader>::GetSlot().Set(loader); }

void Loader::LoadImage(const du::SmartPtr<luk::Image>& image, const du::SmartPtr<luk::AsyncEvent>& event,
                       const du::Symbol&)
{
    const Source source{Kind::Picture, image ? image->GetURL() : du::Symbol(), nullptr};
    m_work->Load({image, nullptr, event}, source, nullptr);
}

void Loader::LoadShape(const du::SmartPtr<luk::Shape>& shape, unsigned int, const du::SmartPtr<luk::AsyncEvent>& event,
                       const du::SmartPtr<luk::Anchor>& anchor)
{
    const Source source{Kind::Shape, shape ? shape->GetPathSymbol() : du::Symbol(), shape ? anchor.get() : nullptr};
    m_work->Load({nullptr, shape, event}, source, shape ? shape->GetMesh() : nullptr);
}

std::size_t Loader::GetPendingCount() const noexcept { return m_work->GetPendingCount(); }

std::size_t Loader::GetDecodeCount() const noexcept { return m_work->GetDecodeCount(); }

bool Loader::WaitForLoads(const std::function<bool(std::size_t)>& onProgress)
{
    const std::shared_ptr<Work> work = m_work; // a delivery may end the loader
    return work->Wait(onProgress);
}

void Loader::Stop() { m_work->Stop(); }

} // namespace luloader
