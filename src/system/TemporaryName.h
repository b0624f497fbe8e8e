#ifndef ORVABASE_TEMPORARYNAME_H
#define ORVABASE_TEMPORARYNAME_H

// What the names of temporary files and directories are made from. `$TMPDIR` has no influence.
constexpr const char* temporaryNameTemplate = "/var/tmp/orvXXXXXX";

#endif
