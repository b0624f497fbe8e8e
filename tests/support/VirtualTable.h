#ifndef ORVABASE_TESTS_VIRTUALTABLE_H
#define ORVABASE_TESTS_VIRTUALTABLE_H

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

/// The virtual table of an object's class, as programs that were built against the library see it.
class VirtualTable {
public:
    explicit VirtualTable(const void* object)
        : slots(*static_cast<void (** const*)(void*)>(object)) {}

    /// The number of slots: two for the destructor, and one for each other virtual operation. 0
    /// when the table has no symbol.
    unsigned long getCount() const {
        Dl_info info;
        void* extra = nullptr;
        // The offset to the top and the type information stand before the slots.
        const void* begin = reinterpret_cast<const char*>(slots) - 16;
        if (dladdr1(begin, &info, &extra, RTLD_DL_SYMENT) == 0 || !extra || info.dli_saddr != begin)
            return 0;
        return (static_cast<const ElfW(Sym)*>(extra)->st_size - 16) / sizeof(void*);
    }

    /// The address that slot `index` holds.
    const void* getSlot(unsigned long index) const {
        return reinterpret_cast<const void*>(slots[index]);
    }

    /// Calls slot 1, the deleting destructor.
    void deleteObject(void* object) const { slots[1](object); }

private:
    void (**slots)(void*);
};

#endif
