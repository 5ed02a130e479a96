#include "bench/HeapCounter.h"

#include <errno.h>
#include <malloc.h>

#include <atomic>

// glibc's own entry points, which the definitions below forward to.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* pointer, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* pointer);
}

namespace korva::bench {

namespace {

std::atomic<size_t> sCurrent{0};
std::atomic<size_t> sPeak{0};

void added(void* pointer) {
    if (pointer == nullptr) return;
    size_t now = sCurrent.fetch_add(malloc_usable_size(pointer), std::memory_order_relaxed) +
                 malloc_usable_size(pointer);
    size_t peak = sPeak.load(std::memory_order_relaxed);
    while (now > peak && !sPeak.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
    }
}

void removed(void* pointer) {
    if (pointer == nullptr) return;
    sCurrent.fetch_sub(malloc_usable_size(pointer), std::memory_order_relaxed);
}

}  // namespace

size_t HeapCounter::current() {
    return sCurrent.load(std::memory_order_relaxed);
}

size_t HeapCounter::peak() {
    return sPeak.load(std::memory_order_relaxed);
}

void HeapCounter::resetPeak() {
    sPeak.store(current(), std::memory_order_relaxed);
}

}  // namespace korva::bench

using korva::bench::added;
using korva::bench::removed;

extern "C" {

void* malloc(size_t size) {
    void* pointer = __libc_malloc(size);
    added(pointer);
    return pointer;
}

void* calloc(size_t count, size_t size) {
    void* pointer = __libc_calloc(count, size);
    added(pointer);
    return pointer;
}

void* realloc(void* pointer, size_t size) {
    size_t before = pointer != nullptr ? malloc_usable_size(pointer) : 0;
    void* moved = __libc_realloc(pointer, size);
    if (moved != nullptr || size == 0) {
        korva::bench::sCurrent.fetch_sub(before, std::memory_order_relaxed);
        added(moved);
    }
    return moved;
}

void free(void* pointer) {
    removed(pointer);
    __libc_free(pointer);
}

void* memalign(size_t alignment, size_t size) {
    void* pointer = __libc_memalign(alignment, size);
    added(pointer);
    return pointer;
}

void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) {
    void* pointer = memalign(alignment, size);
    if (pointer == nullptr) return ENOMEM;
    *out = pointer;
    return 0;
}

}  // extern "C"
