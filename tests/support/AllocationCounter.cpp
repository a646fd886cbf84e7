#include <atomic>
#include <cstdlib>
#include <new>

// The one replacement of the global allocation functions of a program (the
// test program and the benchmark program both link it): plain malloc and free
// with a counter. The array and nothrow forms forward to these.

// The number of operator new calls so far.
std::size_t allocationCount();

static std::atomic<std::size_t> g_allocations{0};

std::size_t allocationCount()
{
    return g_allocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1)) {
        return p;
    }
    throw std::bad_alloc();
}

void operator delete(void* p) noexcept
{
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
