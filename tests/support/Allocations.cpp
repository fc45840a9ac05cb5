#include "support/Allocations.h"

#include <cerrno>
#include <cstdlib>

namespace {

thread_local norvane::Allocations *t_counted = nullptr;

void noteAllocation(std::size_t size) noexcept
{
    if (t_counted == nullptr)
        return;
    ++t_counted->count;
    t_counted->bytes += static_cast<qint64>(size);
}

} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

// The sanitizer's own allocation functions tell of each call; not every compiler brings the header
// that declares this.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*atMalloc)(const volatile void *,
                                                                          std::size_t),
                                                         void (*atFree)(const volatile void *));

namespace {
[[maybe_unused]] const int g_hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void *, std::size_t size) { noteAllocation(size); },
    [](const volatile void *) {});
} // namespace

#else

// In the place of the C library's own, for this program and all libraries of it.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);

void *malloc(std::size_t size)
{
    noteAllocation(size);
    return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size)
{
    noteAllocation(count * size);
    return __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size)
{
    noteAllocation(size);
    return __libc_realloc(block, size);
}
void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    noteAllocation(size);
    return __libc_memalign(alignment, size);
}
int posix_memalign(void **block, std::size_t alignment, std::size_t size)
{
    noteAllocation(size);
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
}

#endif

namespace norvane {

void countAllocations(Allocations *counted)
{
    t_counted = counted;
}

Allocations allocationsOf(const std::function<void()> &work)
{
    Allocations counted;
    countAllocations(&counted);
    work();
    countAllocations(nullptr);
    return counted;
}

} // namespace norvane
