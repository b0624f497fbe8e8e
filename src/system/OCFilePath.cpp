#include "OCFilePath.h"

#include <climits>
#include <cstring>
#include <sys/stat.h>

namespace {

bool isSlash(char c) {
    return OCFilePath::testSlash(c);
}
bool isSeparator(char c) {
    return OCFilePath::testSlash(c) || OCFilePath::testColon(c);
}

// The scans below work on a part of a path. `nowhere` is the index of what was not found.
constexpr unsigned long nowhere = ~0UL;

struct Part {
    const char* text;
    unsigned long count;

    explicit Part(const OCFilePath& path) : text(path.getString()), count(path.getLength()) {}
    Part(const OCFilePath& path, unsigned long start)
        : text(path.getString() + start), count(path.getLength() - start) {}

    unsigned long firstSlash(unsigned long from) const {
        for (unsigned long i = from; i < count; ++i)
            if (isSlash(text[i]))
                return i;
        return nowhere;
    }

    // The index before `end` of the last slash.
    unsigned long lastSlash(unsigned long end) const {
        while (end > 0)
            if (isSlash(text[--end]))
                return end;
        return nowhere;
    }

    unsigned long lastSeparator() const {
        for (unsigned long i = count; i > 0; --i)
            if (isSeparator(text[i - 1]))
                return i - 1;
        return nowhere;
    }

    // The colon that ends the classic drive.
    unsigned long driveColon() const {
        for (unsigned long i = 0; i < count; ++i) {
            if (OCFilePath::testColon(text[i]))
                return i;
            if (isSlash(text[i]))
                break;
        }
        return nowhere;
    }

    // Where the filename begins; `nowhere` when the part ends in a separator.
    unsigned long filename() const {
        const unsigned long separator = lastSeparator();
        if (separator == nowhere)
            return 0;
        return separator + 1 < count ? separator + 1 : nowhere;
    }

    // The period that begins the extension.
    unsigned long extension() const {
        for (unsigned long i = count; i > 0; --i) {
            if (OCFilePath::testPeriod(text[i - 1]))
                return i - 1;
            if (isSeparator(text[i - 1]))
                break;
        }
        return nowhere;
    }

    // Where an extension is to begin; `nowhere` when there is no filename to carry it.
    unsigned long extensionPlace() const {
        const unsigned long period = extension();
        if (period != nowhere)
            return period;
        return count > 0 && isSeparator(text[count - 1]) ? nowhere : count;
    }

    // The length of the universal drive; `nowhere` when two slashes do not begin the part.
    unsigned long universalDrive() const {
        unsigned long slashes = 0;
        for (unsigned long i = 0; i < count; ++i) {
            if (isSlash(text[i])) {
                if (++slashes == 4)
                    return i;
            } else if (i < 2) {
                return nowhere;
            }
        }
        return count;
    }
};

// Where the first directory begins: behind the drive and one slash.
unsigned long firstDirectory(const OCFilePath& path) {
    const Part part(path);
    const unsigned long start = path.isUniversal() ? part.universalDrive() : part.driveColon() + 1;
    return start < part.count && isSlash(part.text[start]) ? start + 1 : start;
}

// The characters before `start` go.
void keepFrom(OCFilePath& path, unsigned long start) {
    if (start >= path.getLength())
        path.clear();
    else if (start > 0)
        path.remove(0, start);
}

// The characters from `start` on are replaced. `text` does not lie in the path.
void replaceFrom(OCFilePath& path, unsigned long start, const OCAnsiString& text) {
    const unsigned long count = text.getLength();
    path.setLength(start + count);
    memcpy(path.getString() + start, text.getString(), count);
}

OCFilePath& replaceAll(OCFilePath& path, char from, char to) {
    char* const text = path.getString();
    const unsigned long count = path.getLength();
    for (unsigned long i = 0; i < count; ++i)
        text[i] = text[i] == from ? to : text[i];
    return path;
}

OEFileType fileTypeOf(const char* path, bool followLinks) {
    struct stat status;
    if ((followLinks ? stat(path, &status) : lstat(path, &status)) != 0)
        return FileTypeUnknown;
    switch (status.st_mode & S_IFMT) {
    case S_IFBLK:
        return FileTypeBlockDevice;
    case S_IFCHR:
        return FileTypeCharacterDevice;
    case S_IFDIR:
        return FileTypeDirectory;
    case S_IFLNK:
        return FileTypeSymbolicLink;
    case S_IFIFO:
        return FileTypeFifo;
    case S_IFREG:
        return FileTypeRegular;
    case S_IFSOCK:
        return FileTypeSocket;
    default:
        return FileTypeUnknown;
    }
}

OCDateTime fileTime(const OCFilePath& path, struct timespec stat::*time) {
    struct stat status;
    struct tm structure;
    if (stat(path.getString(), &status) != 0 ||
        gmtime_r(&(status.*time).tv_sec, &structure) == nullptr)
        throw OXFilePath_GetFileTimeError();
    return OCDateTime(structure);
}

} // namespace

OCFilePath::~OCFilePath() noexcept = default;

OCFilePath& OCFilePath::convertSlashesUnix() {
    return replaceAll(*this, '\\', '/');
}

OCFilePath& OCFilePath::convertSlashesWindows() {
    return replaceAll(*this, '/', '\\');
}

OCFilePath& OCFilePath::convertSlashes(OEFilePathSystem system) {
    return system == FilePathSystemWindows ? convertSlashesWindows() : convertSlashesUnix();
}

char OCFilePath::makeSlash(OEFilePathSystem system) const {
    if (system == FilePathSystemUnix)
        return '/';
    return system == FilePathSystemWindows ? '\\' : makeSlashAutomatic();
}

char OCFilePath::makeSlashAutomatic() const {
    const unsigned long slash = Part(*this).firstSlash(0);
    return slash == nowhere ? '/' : getString()[slash];
}

bool OCFilePath::validateSlashes(OEFilePathSystem system) const {
    const char wrong = OCFilePath().makeSlash(system) == '/' ? '\\' : '/';
    return memchr(getString(), wrong, getLength()) == nullptr;
}

OCFilePath& OCFilePath::addLeadingSlash(OEFilePathSystem system) {
    if (!hasLeadingSlash())
        insert(makeSlash(system));
    return *this;
}

OCFilePath& OCFilePath::addTrailingSlash(OEFilePathSystem system) {
    if (!hasTrailingSlash())
        append(makeSlash(system));
    return *this;
}

OCFilePath& OCFilePath::removeLeadingSlash() {
    if (hasLeadingSlash())
        remove(0, 1);
    return *this;
}

OCFilePath& OCFilePath::removeTrailingSlash() {
    if (hasTrailingSlash())
        left(getLength() - 1);
    return *this;
}

OCFilePath& OCFilePath::addLeadingPeriod() {
    if (!hasLeadingPeriod())
        insert('.');
    return *this;
}

bool OCFilePath::isUniversal() const {
    const Part path(*this);
    return path.count > 2 && isSlash(path.text[0]) && isSlash(path.text[1]) &&
           path.firstSlash(2) != nowhere;
}

bool OCFilePath::isRelative() const {
    return !hasLeadingSlash() && Part(*this).driveColon() == nowhere;
}

bool OCFilePath::hasDrive() const {
    return isUniversal() || hasDriveClassic();
}

OCFilePath& OCFilePath::extractDrive() {
    if (getLength() == 0 || !(isUniversal() ? extractDriveUniversal() : extractDriveClassic()))
        throw OXFilePath_ExtractDriveError();
    return *this;
}

OCFilePath& OCFilePath::removeDrive() {
    if (!(isUniversal() ? removeDriveUniversal() : removeDriveClassic()))
        throw OXFilePath_RemoveDriveError();
    return *this;
}

bool OCFilePath::hasDriveClassic() const {
    return Part(*this).driveColon() != nowhere;
}

bool OCFilePath::hasDriveUniversal() const {
    return Part(*this).universalDrive() != nowhere;
}

bool OCFilePath::extractDriveClassic() {
    const unsigned long colon = Part(*this).driveColon();
    if (colon == nowhere)
        return false;
    left(colon + 1);
    return true;
}

bool OCFilePath::extractDriveUniversal() {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere)
        return false;
    left(drive);
    return true;
}

bool OCFilePath::removeDriveClassic() {
    const unsigned long colon = Part(*this).driveColon();
    if (colon != nowhere)
        keepFrom(*this, colon + 1);
    return true;
}

bool OCFilePath::removeDriveUniversal() {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere)
        return false;
    keepFrom(*this, drive);
    return true;
}

bool OCFilePath::hasFilename() const {
    return getLength() != 0 && (isUniversal() ? hasFilenameUniversal() : hasFilenameClassic());
}

OCFilePath& OCFilePath::extractFilename() {
    if (getLength() == 0 ||
        !(isUniversal() ? extractFilenameUniversal() : extractFilenameClassic()))
        throw OXFilePath_ExtractFilenameError();
    return *this;
}

OCFilePath& OCFilePath::removeFilename() {
    if (!(isUniversal() ? removeFilenameUniversal() : removeFilenameClassic()))
        throw OXFilePath_RemoveFilenameError();
    return *this;
}

OCFilePath& OCFilePath::changeFilename(const OCAnsiString& name) {
    if (!(isUniversal() ? changeFilenameUniversal(name) : changeFilenameClassic(name)))
        throw OXFilePath_ChangeFilenameError();
    return *this;
}

bool OCFilePath::hasFilenameClassic() const {
    return getLength() != 0 && !isSeparator(getString()[getLength() - 1]);
}

bool OCFilePath::hasFilenameUniversal() const {
    const unsigned long drive = Part(*this).universalDrive();
    return drive != nowhere && drive < getLength() && hasFilenameClassic();
}

bool OCFilePath::extractFilenameClassic() {
    const unsigned long filename = Part(*this).filename();
    if (filename == nowhere)
        return false;
    keepFrom(*this, filename);
    return true;
}

bool OCFilePath::extractFilenameUniversal() {
    return hasFilenameUniversal() && extractFilenameClassic();
}

bool OCFilePath::removeFilenameClassic() {
    left(Part(*this).lastSeparator() + 1);
    return true;
}

bool OCFilePath::removeFilenameUniversal() {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere)
        return false;
    left(drive + Part(*this, drive).lastSeparator() + 1);
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): `name` may be the path itself
bool OCFilePath::changeFilenameClassic(OCFilePath name) {
    replaceFrom(*this, Part(*this).lastSeparator() + 1, name);
    return true;
}

bool OCFilePath::changeFilenameUniversal(OCFilePath name) {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere)
        return false;
    const unsigned long start = drive + Part(*this, drive).lastSeparator() + 1;
    // What follows a drive begins with a slash, so here the path is nothing but its drive.
    if (start == drive && !name.hasLeadingSlash() && !hasTrailingSlash())
        name.insert(makeSlashAutomatic());
    replaceFrom(*this, start, name);
    return true;
}

bool OCFilePath::hasExtension() const {
    return getLength() != 0 && (isUniversal() ? hasExtensionUniversal() : hasExtensionClassic());
}

OCFilePath& OCFilePath::extractExtension() {
    if (getLength() == 0 ||
        !(isUniversal() ? extractExtensionUniversal() : extractExtensionClassic()))
        throw OXFilePath_ExtractExtensionError();
    return *this;
}

OCFilePath& OCFilePath::removeExtension() {
    if (!(isUniversal() ? removeExtensionUniversal() : removeExtensionClassic()))
        throw OXFilePath_RemoveExtensionError();
    return *this;
}

OCFilePath& OCFilePath::changeExtension(const OCAnsiString& extension) {
    if (getLength() == 0 ||
        !(isUniversal() ? changeExtensionUniversal(extension) : changeExtensionClassic(extension)))
        throw OXFilePath_ChangeExtensionError();
    return *this;
}

bool OCFilePath::hasExtensionClassic() const {
    return Part(*this).extension() != nowhere;
}

bool OCFilePath::hasExtensionUniversal() const {
    const unsigned long drive = Part(*this).universalDrive();
    return drive != nowhere && Part(*this, drive).extension() != nowhere;
}

bool OCFilePath::extractExtensionClassic() {
    const unsigned long period = Part(*this).extension();
    if (period == nowhere)
        return false;
    keepFrom(*this, period);
    return true;
}

bool OCFilePath::extractExtensionUniversal() {
    return hasExtensionUniversal() && extractExtensionClassic();
}

bool OCFilePath::removeExtensionClassic() {
    const unsigned long period = Part(*this).extension();
    if (period != nowhere)
        left(period);
    return true;
}

bool OCFilePath::removeExtensionUniversal() {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere)
        return false;
    const unsigned long period = Part(*this, drive).extension();
    if (period != nowhere)
        left(drive + period);
    return true;
}

bool OCFilePath::changeExtensionClassic(OCFilePath extension) {
    const unsigned long place = Part(*this).extensionPlace();
    if (place == nowhere)
        return false;
    replaceFrom(*this, place, extension.addLeadingPeriod());
    return true;
}

bool OCFilePath::changeExtensionUniversal(OCFilePath extension) {
    const unsigned long drive = Part(*this).universalDrive();
    if (drive == nowhere || drive == getLength())
        return false;
    const unsigned long place = Part(*this, drive).extensionPlace();
    if (place == nowhere)
        return false;
    replaceFrom(*this, drive + place, extension.addLeadingPeriod());
    return true;
}

OCFilePath& OCFilePath::extractFirstDirectory() {
    const unsigned long start = firstDirectory(*this);
    const unsigned long slash = Part(*this).firstSlash(start + 1);
    if (start >= getLength())
        clear();
    else
        mid(start, slash == nowhere ? getLength() : slash - start);
    return *this;
}

OCFilePath& OCFilePath::removeFirstDirectory() {
    const unsigned long slash = Part(*this).firstSlash(firstDirectory(*this) + 1);
    keepFrom(*this, slash == nowhere ? getLength() : slash + 1);
    return *this;
}

OCFilePath& OCFilePath::removeLastDirectory() {
    const unsigned long count = getLength();
    left(Part(*this).lastSlash(count == 0 ? 0 : count - 1) + 1);
    return *this;
}

OEFileType OCFilePath::getFileType(bool followLinks) const {
    return fileTypeOf(getString(), followLinks);
}

bool OCFilePath::existsFile(bool followLinks) const {
    return getLength() != 0 && getFileType(followLinks) == FileTypeRegular;
}

bool OCFilePath::existsDirectory(bool followLinks) const {
    const unsigned long count = getLength() - (hasTrailingSlash() ? 1 : 0);
    if (count == 0)
        return false;
    // A path that does not fit is too long for the system, with the slash or without, or it has a
    // zero byte that ends it before the slash.
    char path[PATH_MAX];
    if (count == getLength() || count >= sizeof path)
        return getFileType(followLinks) == FileTypeDirectory;
    memcpy(path, getString(), count);
    path[count] = 0;
    return fileTypeOf(path, followLinks) == FileTypeDirectory;
}

long OCFilePath::getFileSize() const {
    struct stat status;
    if (stat(getString(), &status) != 0)
        throw OXFilePath_GetFileSizeError();
    return status.st_size;
}

OCDateTime OCFilePath::getTimeAccessed() const {
    return fileTime(*this, &stat::st_atim);
}

OCDateTime OCFilePath::getTimeModified() const {
    return fileTime(*this, &stat::st_mtim);
}

OCDateTime OCFilePath::getTimeCreated() const {
    return fileTime(*this, &stat::st_ctim);
}

OXFilePath::OXFilePath() = default;
OXFilePath::~OXFilePath() noexcept = default;

OXFilePath_ChangeExtensionError::OXFilePath_ChangeExtensionError() {
    setClass("OXFilePath_ChangeExtensionError");
    setMessage("Error changing extension of file path");
}
OXFilePath_ChangeExtensionError::~OXFilePath_ChangeExtensionError() noexcept = default;

OXFilePath_ChangeFilenameError::OXFilePath_ChangeFilenameError() {
    setClass("OXFilePath_ChangeFilenameError");
    setMessage("Error changing filename of file path");
}
OXFilePath_ChangeFilenameError::~OXFilePath_ChangeFilenameError() noexcept = default;

OXFilePath_ExtractDriveError::OXFilePath_ExtractDriveError() {
    setClass("OXFilePath_ExtractDriveError");
    setMessage("Error extracting drive from file path");
}
OXFilePath_ExtractDriveError::~OXFilePath_ExtractDriveError() noexcept = default;

OXFilePath_ExtractExtensionError::OXFilePath_ExtractExtensionError() {
    setClass("OXFilePath_ExtractExtensionError");
    setMessage("Error extracting extension from file path");
}
OXFilePath_ExtractExtensionError::~OXFilePath_ExtractExtensionError() noexcept = default;

OXFilePath_ExtractFilenameError::OXFilePath_ExtractFilenameError() {
    setClass("OXFilePath_ExtractFilenameError");
    setMessage("Error extracting filename from file path");
}
OXFilePath_ExtractFilenameError::~OXFilePath_ExtractFilenameError() noexcept = default;

OXFilePath_GetFileSizeError::OXFilePath_GetFileSizeError() {
    setClass("OXFilePath_GetFileSizeError");
    setMessage("Error getting file size of file path");
}
OXFilePath_GetFileSizeError::~OXFilePath_GetFileSizeError() noexcept = default;

OXFilePath_GetFileTimeError::OXFilePath_GetFileTimeError() {
    setClass("OXFilePath_GetFileTimeError");
    setMessage("Error getting file time of file path");
}
OXFilePath_GetFileTimeError::~OXFilePath_GetFileTimeError() noexcept = default;

OXFilePath_RemoveDriveError::OXFilePath_RemoveDriveError() {
    setClass("OXFilePath_RemoveDriveError");
    setMessage("Error removing drive from file path");
}
OXFilePath_RemoveDriveError::~OXFilePath_RemoveDriveError() noexcept = default;

OXFilePath_RemoveExtensionError::OXFilePath_RemoveExtensionError() {
    setClass("OXFilePath_RemoveExtensionError");
    setMessage("Error removing extension from file path");
}
OXFilePath_RemoveExtensionError::~OXFilePath_RemoveExtensionError() noexcept = default;

OXFilePath_RemoveFilenameError::OXFilePath_RemoveFilenameError() {
    setClass("OXFilePath_RemoveFilenameError");
    setMessage("Error removing filename from file path");
}
OXFilePath_RemoveFilenameError::~OXFilePath_RemoveFilenameError() noexcept = default;

OXFilePath_SetFileTimeError::OXFilePath_SetFileTimeError() {
    setClass("OXFilePath_SetFileTimeError");
    setMessage("Error setting file time of file path");
}
OXFilePath_SetFileTimeError::~OXFilePath_SetFileTimeError() noexcept = default;
