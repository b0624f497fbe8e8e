#include "OCObject.h"

#include "OCMemory.h"

void* OCObject::operator new(std::size_t size) {
    void* block = nullptr;
    memoryAllocate(block, size);
    return block;
}

void OCObject::operator delete(void* p) noexcept {
    memoryRelease(p);
}

void* OCObject::operator new[](std::size_t size) {
    void* block = nullptr;
    memoryAllocate(block, size);
    return block;
}

void OCObject::operator delete[](void* p) noexcept {
    memoryRelease(p);
}

OCObjectDisposer::~OCObjectDisposer() noexcept {
    try {
        delete object;
    } catch (...) {
        // Dropped: the object is gone, and its holder has already let go of it.
    }
}
