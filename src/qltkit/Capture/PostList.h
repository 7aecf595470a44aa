#pragma once

#include <qltkit/Capture/CaptureItem.h>

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>

namespace qltkit
{

struct Post
{
    /// The number of bytes that count against the limit of waiting bytes.
    std::size_t Size() const { return sizeof(Post) + name.size() + text.size(); }

    CaptureItem::Kind kind = CaptureItem::Kind::Event;
    std::int64_t hostTimeNs = 0;
    std::uint64_t after = 0; // the number of reports that were added before it
    CaptureLevel level = CaptureLevel::Unknown;
    std::string name;
    std::string text;   // the text, or the pixels of a frame
    CaptureFrame frame; // its pixels are in `text`
    Post* next = nullptr;
};

/// Passes events, texts and frames from threads that must not wait to the thread that writes them.
class PostList
{
public:
    explicit PostList(std::size_t maxBytes)
        : mMaxBytes(maxBytes)
    {
    }

    ~PostList()
    {
        std::deque<std::unique_ptr<Post>> rest;
        Take(rest);
    }

    PostList(const PostList&) = delete;
    PostList& operator=(const PostList&) = delete;

    /// Returns true when a post of `size` bytes has room. The bytes then count until Release. Any
    /// thread.
    bool Reserve(std::size_t size) noexcept
    {
        if (mBytes.fetch_add(size) + size <= mMaxBytes)
        {
            return true;
        }
        Release(size);
        return false;
    }

    void Release(std::size_t size) noexcept { mBytes.fetch_sub(size); }

    /// Adds a post. Any thread.
    void Push(std::unique_ptr<Post> post) noexcept
    {
        Post* const added = post.release();
        added->next = mLast.load(std::memory_order_relaxed);
        while (!mLast.compare_exchange_weak(added->next, added, std::memory_order_release,
                                            std::memory_order_relaxed))
        {
        }
    }

    /// Appends all posts to `posts`, the oldest first. Only one thread may call it.
    void Take(std::deque<std::unique_ptr<Post>>& posts)
    {
        Post* newest = mLast.exchange(nullptr, std::memory_order_acquire);
        Post* oldest = nullptr;
        while (newest != nullptr)
        {
            Post* const before = newest->next;
            newest->next = oldest;
            oldest = newest;
            newest = before;
        }
        while (oldest != nullptr)
        {
            Post* const next = oldest->next;
            posts.emplace_back(oldest);
            oldest = next;
        }
    }

private:
    const std::size_t mMaxBytes;
    std::atomic<std::size_t> mBytes{0};
    std::atomic<Post*> mLast{nullptr};
};

} // namespace qltkit
