#include "ImageBuffers.h"

#include <cstdlib>
#include <deque>
#include <mutex>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

constexpr size_t kSmallest = size_t(1) << 20;
constexpr size_t kKeptBuffers = 8;
// Enough for the LUT output, the blend and the picture below it of a
// 24-megapixel 16-bit grading (144 MB each): fresh pages for pictures that
// size cost more than the grading itself.
constexpr size_t kKeptBytes = size_t(448) << 20;
constexpr size_t kHugePage = size_t(2) << 20;

class ReusingAllocator : public cv::MatAllocator {
public:
    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, size_t* step, cv::AccessFlag,
                           cv::UMatUsageFlags) const override
    {
        size_t total = CV_ELEM_SIZE(type);
        for (int i = dims - 1; i >= 0; --i) {
            if (step) {
                if (data && step[i] != cv::Mat::AUTO_STEP) {
                    CV_Assert(total <= step[i]);
                    total = step[i];
                } else {
                    step[i] = total;
                }
            }
            total *= size_t(sizes[i]);
        }
        auto* u = new cv::UMatData(this);
        u->data = u->origdata = data ? static_cast<uchar*>(data) : take(total);
        u->size = total;
        if (data)
            u->flags |= cv::UMatData::USER_ALLOCATED;
        return u;
    }

    bool allocate(cv::UMatData* u, cv::AccessFlag, cv::UMatUsageFlags) const override { return u != nullptr; }

    void deallocate(cv::UMatData* u) const override
    {
        if (!u)
            return;
        CV_Assert(u->urefcount == 0 && u->refcount == 0);
        if (!(u->flags & cv::UMatData::USER_ALLOCATED))
            give(u->origdata, u->size);
        delete u;
    }

private:
    struct Kept {
        uchar* data;
        size_t size;
    };

    uchar* take(size_t size) const
    {
        if (size < kSmallest)
            return static_cast<uchar*>(cv::fastMalloc(size));
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            for (auto it = m_kept.begin(); it != m_kept.end(); ++it) {
                if (it->size == size) {
                    uchar* data = it->data;
                    m_keptBytes -= size;
                    m_kept.erase(it);
                    return data;
                }
            }
        }
        void* data = std::aligned_alloc(kHugePage, (size + kHugePage - 1) / kHugePage * kHugePage);
        if (!data)
            CV_Error(cv::Error::StsNoMem, "out of memory for an image");
#ifdef __linux__
        madvise(data, size, MADV_HUGEPAGE);
#endif
        return static_cast<uchar*>(data);
    }

    void give(uchar* data, size_t size) const
    {
        if (size < kSmallest) {
            cv::fastFree(data);
            return;
        }
        if (size > kKeptBytes) {
            std::free(data);
            return;
        }
        std::lock_guard<std::mutex> lock(m_mutex);
        m_kept.push_back({data, size});
        m_keptBytes += size;
        while (m_kept.size() > kKeptBuffers || m_keptBytes > kKeptBytes) {
            m_keptBytes -= m_kept.front().size;
            std::free(m_kept.front().data);
            m_kept.pop_front();
        }
    }

    mutable std::mutex m_mutex;
    mutable std::deque<Kept> m_kept;  // oldest first
    mutable size_t m_keptBytes = 0;
};

}  // namespace

cv::MatAllocator* reusingImageAllocator()
{
    // Never destroyed: images may outlive every other static object.
    static ReusingAllocator* allocator = new ReusingAllocator;
    return allocator;
}

void createReusable(cv::Mat& out, cv::Size size, int type)
{
    if (out.size() == size && out.type() == type && out.isContinuous())
        return;
    out.release();
    out.allocator = reusingImageAllocator();
    out.create(size, type);
}
