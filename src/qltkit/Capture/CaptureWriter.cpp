#include <qltkit/Capture/CaptureWriter.h>

#include <qltkit/Error.h>

#include "Capture/BrokenPipes.h"
#include "Capture/CaptureChannels.h"
#include "Capture/CaptureEncoder.h"
#include "Capture/FileBytes.h"
#include "Capture/PartFile.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace qltkit
{

namespace
{

constexpr std::chrono::milliseconds
    POLL(50); // producers do not wake the thread, because that is a system call
constexpr std::chrono::seconds FLUSH_EVERY(1);
constexpr std::size_t MAX_PENDING_BYTES = 2 << 20;

ClockPair ReadClocks(const CaptureOptions& options)
{
    ClockPair pair;
    const std::int64_t before = options.clock->NowNs();
    const auto wall = std::chrono::system_clock::now().time_since_epoch();
    pair.steadyNs = before + (options.clock->NowNs() - before) / 2;
    pair.wallNs = options.wallTimeNs.value_or(static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(wall).count()));
    return pair;
}

std::map<std::string, std::string> MetadataOf(const CaptureOptions& options,
                                              const ClockPair& clocks)
{
    std::map<std::string, std::string> metadata = options.metadata;
    metadata["format"] = "1";
    metadata["library"] = "QueltaKit";
    metadata["version"] = QLTKIT_VERSION;
    metadata["system"] = QLTKIT_SYSTEM;
    metadata[std::string(STEADY_KEY)] = std::to_string(clocks.steadyNs);
    metadata[std::string(WALL_KEY)] = std::to_string(clocks.wallNs);
    return metadata;
}

} // namespace

class CaptureWriter::Impl
{
private:
    ReportRing mRing; // the first member, because it starts a cache line

public:
    Impl(const std::filesystem::path& path, const CaptureOptions& options);
    ~Impl() { Stop(); }

    std::int64_t NowNs() { return mClock.NowNs(); }
    void AddReport(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept;

    /// Adds a post with its strings, which `post` does not contain yet.
    void Add(Post&& post, std::string_view name, std::string_view text) noexcept;

    bool Flush();
    void Close();
    void Discard();
    std::string Failure() const;
    std::uint64_t Reports() const noexcept { return mRing.End(); }
    const std::filesystem::path& TemporaryPath() const noexcept { return mFile.TemporaryPath(); }

    std::atomic<std::uint64_t> writtenReports{0};
    std::atomic<std::uint64_t> droppedReports{0};
    std::atomic<std::uint64_t> droppedOthers{0};

private:
    void Stop();
    void Run();
    bool Work(bool flush, bool stop, std::string& reason);
    bool Transfer(std::string& reason);
    bool WriteDuePosts(std::string& reason);
    bool MakeRoom(std::string& reason);
    void WriteDrops();
    void WriteDrop(std::uint64_t dropped, std::uint64_t& told, const char* what);
    void WriteEnd();

    const std::string mName;
    qlt::Clock& mClock;
    const ClockPair mClocks;
    PostList mPosts;

    // While the thread runs, only the thread uses these members. Before and after that, only the
    // caller uses them.
    PartFile mFile;
    McapWriter mMcap;
    CaptureEncoder mEncoder;
    std::deque<std::unique_ptr<Post>> mDuePosts; // taken from the list and not written yet
    std::uint64_t mTakenReports = 0;             // number of reports taken from the ring
    std::uint64_t mToldReports = 0; // number of dropped reports that the capture records
    std::uint64_t mToldOthers = 0;
    bool mBroken = false; // an exception has left the file in an unknown state

    mutable std::mutex mMutex; // guards the members below
    std::condition_variable mWake;
    std::condition_variable mFlushed;
    std::uint64_t mFlushesWanted = 0;
    std::uint64_t mFlushesDone = 0;
    bool mStopping = false;
    std::string mFailure; // of the last attempt

    std::thread mThread;
    bool mClosed = false;
};

CaptureWriter::Impl::Impl(const std::filesystem::path& path, const CaptureOptions& options)
    : mRing(options.ringReports)
    , mName(TextOf(path))
    , mClock(*options.clock)
    , mClocks(ReadClocks(options))
    , mPosts(options.waitingBytes)
    , mFile(path)
    , mMcap([this](std::string_view bytes) { mFile.Append(bytes); })
    , mEncoder(mMcap, mClocks)
{
    mMcap.AddMetadata(CAPTURE_METADATA, MetadataOf(options, mClocks));
    std::string reason;
    if (!mFile.Write(reason))
    {
        mFile.Discard();
        throw Error("cannot write " + mName + ": " + reason);
    }
    mThread = std::thread([this] { Run(); });
}

void CaptureWriter::Impl::AddReport(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept
{
    if (!mRing.Push(report, hostTimeNs))
    {
        droppedReports.fetch_add(1, std::memory_order_relaxed);
    }
}

void CaptureWriter::Impl::Add(Post&& post, std::string_view name, std::string_view text) noexcept
{
    const std::size_t size = sizeof(Post) + name.size() + text.size();
    if (!mPosts.Reserve(size))
    {
        ++droppedOthers;
        return;
    }
    try
    {
        auto added = std::make_unique<Post>(std::move(post));
        added->name = name;
        added->text = text;
        added->after = mRing.End();
        mPosts.Push(std::move(added));
    }
    catch (const std::bad_alloc&)
    {
        mPosts.Release(size);
        ++droppedOthers;
    }
}

bool CaptureWriter::Impl::Flush()
{
    std::unique_lock<std::mutex> lock(mMutex);
    const std::uint64_t wanted = ++mFlushesWanted;
    mWake.notify_one();
    mFlushed.wait(lock, [&] { return mFlushesDone >= wanted || mStopping; });
    return mFailure.empty();
}

void CaptureWriter::Impl::Close()
{
    if (mClosed)
    {
        return;
    }
    mClosed = true;
    Stop();
    const std::string reason = Failure();
    if (!reason.empty())
    {
        const std::uint64_t missing = mRing.End() + droppedReports - writtenReports;
        throw Error("cannot write all of " + mName + ": " + reason + "; " +
                    std::to_string(missing) + " reports are missing, and the others are in " +
                    TextOf(mFile.TemporaryPath()));
    }
    mFile.Finish();
}

void CaptureWriter::Impl::Discard()
{
    if (!mClosed)
    {
        mClosed = true;
        Stop();
        mFile.Discard();
    }
}

std::string CaptureWriter::Impl::Failure() const
{
    const std::lock_guard<std::mutex> lock(mMutex);
    return mFailure;
}

void CaptureWriter::Impl::Stop()
{
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mStopping = true;
        mWake.notify_one();
        mFlushed.notify_all();
    }
    if (mThread.joinable())
    {
        mThread.join();
    }
}

void CaptureWriter::Impl::Run()
{
    using SteadyClock = std::chrono::steady_clock;
    LetWritesToBrokenPipesFail();
    SteadyClock::time_point lastFlush = SteadyClock::now();
    std::unique_lock<std::mutex> lock(mMutex);
    for (bool stop = false; !stop;)
    {
        mWake.wait_for(lock, POLL, [this] { return mStopping || mFlushesDone < mFlushesWanted; });
        stop = mStopping;
        const std::uint64_t wanted = mFlushesWanted;
        const SteadyClock::time_point now = SteadyClock::now();
        const bool flush = stop || mFlushesDone < wanted || now - lastFlush >= FLUSH_EVERY;
        lock.unlock();
        std::string reason;
        const bool succeeds = Work(flush, stop, reason);
        lock.lock();
        mFailure = succeeds ? "" : reason;
        mFlushesDone = wanted;
        mFlushed.notify_all();
        lastFlush = flush ? now : lastFlush;
    }
}

/// Writes the available data. Returns false when the system does not take it; nothing is lost then.
bool CaptureWriter::Impl::Work(bool flush, bool stop, std::string& reason)
{
    try
    {
        if (mBroken || !mFile.Write(reason) || !Transfer(reason))
        {
            return false;
        }
        if (flush)
        {
            mMcap.Flush();
        }
        if (stop)
        {
            WriteEnd();
        }
        if (!mFile.Write(reason))
        {
            return false;
        }
        writtenReports = flush ? mTakenReports : writtenReports.load();
        return true;
    }
    catch (const std::exception& exception)
    {
        mBroken = true;
        reason = exception.what();
        return false;
    }
}

/// Moves data from the ring and the list to the file. The order of each adding thread is kept.
bool CaptureWriter::Impl::Transfer(std::string& reason)
{
    const std::uint64_t end = mRing.End(); // read before the list; later reports wait
    mPosts.Take(mDuePosts);
    ReportRing::Entry report;
    while (WriteDuePosts(reason) && MakeRoom(reason))
    {
        if (mTakenReports == end || !mRing.Pop(report))
        {
            WriteDrops();
            return true;
        }
        mEncoder.Write(report);
        ++mTakenReports;
    }
    return false;
}

bool CaptureWriter::Impl::WriteDuePosts(std::string& reason)
{
    while (!mDuePosts.empty() && mDuePosts.front()->after <= mTakenReports)
    {
        const Post& post = *mDuePosts.front();
        mEncoder.Write(post);
        mPosts.Release(post.Size());
        mDuePosts.pop_front();
        if (!MakeRoom(reason))
        {
            return false;
        }
    }
    return true;
}

/// Keeps the pending bytes limited. So a slow disk fills the ring and not the memory.
bool CaptureWriter::Impl::MakeRoom(std::string& reason)
{
    return mFile.PendingBytes() < MAX_PENDING_BYTES || mFile.Write(reason);
}

void CaptureWriter::Impl::WriteDrops()
{
    WriteDrop(droppedReports, mToldReports, " reports");
    WriteDrop(droppedOthers, mToldOthers, " events, texts and frames");
}

void CaptureWriter::Impl::WriteDrop(std::uint64_t dropped, std::uint64_t& told, const char* what)
{
    if (dropped != told)
    {
        Post post;
        post.hostTimeNs = mClock.NowNs();
        post.name = "dropped";
        post.text = std::to_string(dropped - told) + what;
        mEncoder.Write(post);
        told = dropped;
    }
}

void CaptureWriter::Impl::WriteEnd()
{
    mMcap.AddMetadata(END_METADATA, {{"reports", std::to_string(mTakenReports)},
                                     {"dropped.reports", std::to_string(mToldReports)},
                                     {"dropped.others", std::to_string(mToldOthers)}});
    mMcap.Close();
}

CaptureWriter::CaptureWriter(const std::filesystem::path& path, const CaptureOptions& options)
    : mImpl(std::make_unique<Impl>(path, options))
{
}

CaptureWriter::~CaptureWriter()
{
    try
    {
        mImpl->Close();
    }
    catch (const std::exception&)
    {
        return; // a caller who needs the error calls Close
    }
}

void CaptureWriter::AddReport(const std::uint8_t* report) noexcept
{
    mImpl->AddReport(report, mImpl->NowNs());
}

void CaptureWriter::AddReport(const std::uint8_t* report, std::int64_t hostTimeNs) noexcept
{
    mImpl->AddReport(report, hostTimeNs);
}

void CaptureWriter::AddEvent(std::string_view name, std::string_view detail) noexcept
{
    AddEvent(name, detail, mImpl->NowNs());
}

void CaptureWriter::AddEvent(std::string_view name, std::string_view detail,
                             std::int64_t hostTimeNs) noexcept
{
    Post post;
    post.hostTimeNs = hostTimeNs;
    mImpl->Add(std::move(post), name, detail);
}

void CaptureWriter::AddText(CaptureLevel level, std::string_view text) noexcept
{
    AddText(level, text, mImpl->NowNs());
}

void CaptureWriter::AddText(CaptureLevel level, std::string_view text,
                            std::int64_t hostTimeNs) noexcept
{
    Post post;
    post.kind = CaptureItem::Kind::Text;
    post.hostTimeNs = hostTimeNs;
    post.level = level;
    mImpl->Add(std::move(post), {}, text);
}

void CaptureWriter::AddFrame(const CaptureFrame& frame) { AddFrame(frame, mImpl->NowNs()); }

void CaptureWriter::AddFrame(const CaptureFrame& frame, std::int64_t hostTimeNs)
{
    const std::uint64_t size = std::uint64_t{frame.step} * frame.height;
    if (size != frame.pixels.size() || size > MAX_FRAME_BYTES)
    {
        throw Error("a frame of " + std::to_string(frame.height) + " rows of " +
                    std::to_string(frame.step) + " bytes with " +
                    std::to_string(frame.pixels.size()) + " bytes of pixels is none, or too large");
    }
    Post post;
    post.kind = CaptureItem::Kind::Frame;
    post.hostTimeNs = hostTimeNs;
    post.frame = frame;
    post.frame.pixels = {};
    mImpl->Add(std::move(post), {}, frame.pixels);
}

bool CaptureWriter::Flush() { return mImpl->Flush(); }

void CaptureWriter::Close() { mImpl->Close(); }

void CaptureWriter::Discard() { mImpl->Discard(); }

std::uint64_t CaptureWriter::Reports() const noexcept { return mImpl->Reports(); }

std::uint64_t CaptureWriter::WrittenReports() const noexcept { return mImpl->writtenReports; }

std::uint64_t CaptureWriter::DroppedReports() const noexcept { return mImpl->droppedReports; }

std::uint64_t CaptureWriter::DroppedOthers() const noexcept { return mImpl->droppedOthers; }

std::string CaptureWriter::Failure() const { return mImpl->Failure(); }

const std::filesystem::path& CaptureWriter::TemporaryPath() const noexcept
{
    return mImpl->TemporaryPath();
}

} // namespace qltkit
