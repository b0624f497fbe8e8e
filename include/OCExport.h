#ifndef ORVABASE_OCEXPORT_H
#define ORVABASE_OCEXPORT_H

/// Marks a class or function as part of the library's exported interface. The library is built with
/// hidden visibility, so whatever does not carry this mark stays inside it.
#define ORVABASE_EXPORT __attribute__((visibility("default")))

#endif
