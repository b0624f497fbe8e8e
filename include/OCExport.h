#ifndef ORVABASE_OCEXPORT_H
#define ORVABASE_OCEXPORT_H

/// Marks a class or function as part of the library's exported interface. The library is built with
/// hidden visibility, so whatever does not carry this mark stays inside it.
#define ORVABASE_EXPORT __attribute__((visibility("default")))

/// Marks a function that does so little that the jump through a program's procedure linkage table
/// shows: programs call it by its address at once, where the compiler can do that. The function is
/// then looked up when the program starts instead of at the first call.
#if defined(__has_attribute)
#if __has_attribute(noplt)
#define ORVABASE_DIRECT __attribute__((noplt))
#endif
#endif
#ifndef ORVABASE_DIRECT
#define ORVABASE_DIRECT
#endif

#endif
