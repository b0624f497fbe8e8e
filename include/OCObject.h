#ifndef ORVABASE_OCOBJECT_H
#define ORVABASE_OCOBJECT_H

#include "OCExport.h"

#include <cstddef>

/// The result of every three-way comparison of the library.
enum OECompareResult : int {
    CompareResultLess = -1,
    CompareResultEqual = 0,
    CompareResultGreater = 1
};

/// The root of every class of the library.
///
/// It holds nothing and promises two things: an object can be deleted through a pointer to any of
/// its bases, and `new` of a class derived from it never returns null: exhausted memory is always
/// `OXMemory_AllocationError`.
///
/// Note: the destructor is `noexcept(false)`, because the objects of an application may throw from
/// theirs; `OCObjectDisposer` and the containers' deleting companions are made for that. A class
/// that derives from one of the library's concrete classes (whose destructors are `noexcept`) and
/// has members whose destructors may throw declares its own destructor `noexcept`.
///
///     class Sensor : public OCObject { … };
///     OCObject* object = new Sensor;   // throws OXMemory_AllocationError when memory is exhausted
///     delete object;                   // runs ~Sensor
class ORVABASE_EXPORT OCObject {
public:
    OCObject() noexcept = default;
    OCObject(const OCObject&) noexcept = default;
    OCObject& operator=(const OCObject&) noexcept = default;
    virtual ~OCObject() noexcept(false) {}

    /// Storage of `size` bytes from `memoryAllocate`.
    /// @throws OXMemory_AllocationError when memory is exhausted.
    static void* operator new(std::size_t size);
    /// Gives storage back through `memoryRelease`; null is harmless.
    static void operator delete(void* p) noexcept;

    /// The array forms take their storage from the same place.
    /// @throws OXMemory_AllocationError when memory is exhausted.
    static void* operator new[](std::size_t size);
    static void operator delete[](void* p) noexcept;

    /// Placement construction, so that standard containers and `new (place) T` work.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept {}
    static void* operator new[](std::size_t, void* place) noexcept { return place; }
    static void operator delete[](void*, void*) noexcept {}
};

/// Deletes one object at the end of a scope and lets no exception of its destructor out.
///
/// The containers detach an element first and hand it to a disposer then, so that they are
/// consistent whatever the element's destructor does. Takes ownership of the object.
///
///     OCObjectDisposer disposer(list.detach(3));   // deleted when the scope ends
class ORVABASE_EXPORT OCObjectDisposer : public OCObject {
public:
    /// Takes ownership of `owned`, which may be null.
    explicit OCObjectDisposer(OCObject* owned) noexcept : object(owned) {}
    OCObjectDisposer(const OCObjectDisposer&) = delete;
    OCObjectDisposer& operator=(const OCObjectDisposer&) = delete;
    /// Deletes the object; an exception from its destructor is dropped.
    ~OCObjectDisposer() noexcept override;

private:
    OCObject* object;
};

#endif
