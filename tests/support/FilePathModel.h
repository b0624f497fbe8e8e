#ifndef ORVABASE_TESTS_FILEPATHMODEL_H
#define ORVABASE_TESTS_FILEPATHMODEL_H

#include <algorithm>
#include <functional>
#include <string>

// The path grammar once more, written as plainly as possible: character walks over a std::string,
// copies wherever a copy is easier, nothing shared with the library. Each operation says whether it
// succeeded; one that did not has left the path alone.
struct FilePathModel {
    std::string path;

    static bool slash(char c) { return c == '/' || c == '\\'; }
    static bool separator(char c) { return slash(c) || c == ':'; }

    bool isUniversal() const {
        int slashes = 0;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (slash(path[i])) {
                if (++slashes == 3)
                    return true;
            } else if (i == 0 || i == 1) {
                return false;
            }
        }
        return false;
    }

    bool isRelative() const {
        if (isUniversal())
            return false;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (path[i] == ':')
                return false;
            if (slash(path[i]))
                return i != 0;
        }
        return true;
    }

    bool hasDriveClassic() const {
        for (char c : path) {
            if (c == ':')
                return true;
            if (slash(c))
                return false;
        }
        return false;
    }
    bool extractDriveClassic() {
        if (!hasDriveClassic())
            return false;
        path.resize(path.find(':') + 1);
        return true;
    }
    bool removeDriveClassic() {
        if (hasDriveClassic())
            path = path.substr(path.find(':') + 1);
        return true;
    }

    bool splitUniversal(std::string& drive, std::string& rest) const {
        int slashes = 0;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (slash(path[i])) {
                if (++slashes == 4) {
                    drive = path.substr(0, i);
                    rest = path.substr(i);
                    return true;
                }
            } else if (i == 0 || i == 1) {
                return false;
            }
        }
        drive = path;
        rest.clear();
        return true;
    }
    bool hasDriveUniversal() const {
        FilePathModel copy = *this;
        return copy.extractDriveUniversal();
    }
    bool extractDriveUniversal() {
        std::string drive;
        std::string rest;
        if (!splitUniversal(drive, rest))
            return false;
        path = drive;
        return true;
    }
    bool removeDriveUniversal() {
        std::string drive;
        std::string rest;
        if (!splitUniversal(drive, rest))
            return false;
        path = rest;
        return true;
    }

    bool hasFilenameClassic() const { return !path.empty() && !separator(path.back()); }
    bool extractFilenameClassic() {
        const std::size_t last = path.find_last_of("/\\:");
        if (last == std::string::npos)
            return true;
        if (last == path.size() - 1)
            return false;
        path.erase(0, last + 1);
        return true;
    }
    bool removeFilenameClassic() {
        const std::size_t last = path.find_last_of("/\\:");
        path = last == std::string::npos ? "" : path.substr(0, last + 1);
        return true;
    }
    bool changeFilenameClassic(const std::string& name) {
        removeFilenameClassic();
        path += name;
        return true;
    }

    bool findExtension(std::size_t& place) const {
        for (std::size_t i = path.size(); i-- > 0;) {
            if (path[i] == '.') {
                place = i;
                return true;
            }
            if (separator(path[i]))
                return false;
        }
        return false;
    }
    bool hasExtensionClassic() const {
        std::size_t place = 0;
        return findExtension(place);
    }
    bool extractExtensionClassic() {
        std::size_t place = 0;
        if (!findExtension(place))
            return false;
        path = path.substr(place);
        return true;
    }
    bool removeExtensionClassic() {
        std::size_t place = 0;
        if (findExtension(place))
            path.resize(place);
        return true;
    }
    bool changeExtensionClassic(std::string extension) {
        if (extension.empty() || extension[0] != '.')
            extension = "." + extension;
        std::size_t place = 0;
        if (findExtension(place))
            path.resize(place);
        else if (!path.empty() && separator(path.back()))
            return false;
        path += extension;
        return true;
    }

    // The universal forms: the classic operation on what follows the drive.
    bool onRest(bool refuseEmpty, bool keepDrive,
                const std::function<bool(FilePathModel&)>& operation) {
        std::string drive;
        FilePathModel rest;
        if (!splitUniversal(drive, rest.path))
            return false;
        if (refuseEmpty && rest.path.empty())
            return false;
        if (!operation(rest))
            return false;
        path = keepDrive ? drive + rest.path : rest.path;
        return true;
    }
    bool hasFilenameUniversal() const {
        FilePathModel copy = *this;
        return copy.extractFilenameUniversal();
    }
    bool extractFilenameUniversal() {
        return onRest(true, false, [](FilePathModel& m) { return m.extractFilenameClassic(); });
    }
    bool removeFilenameUniversal() {
        return onRest(false, true, [](FilePathModel& m) { return m.removeFilenameClassic(); });
    }
    bool changeFilenameUniversal(const std::string& name) {
        std::string drive;
        FilePathModel rest;
        if (!splitUniversal(drive, rest.path))
            return false;
        rest.changeFilenameClassic(name);
        if (rest.path.empty() || !slash(rest.path[0])) {
            FilePathModel target{drive};
            target.addTrailingSlash(0);
            drive = target.path;
        }
        path = drive + rest.path;
        return true;
    }
    bool hasExtensionUniversal() const {
        FilePathModel copy = *this;
        return copy.extractExtensionUniversal();
    }
    bool extractExtensionUniversal() {
        return onRest(true, false, [](FilePathModel& m) { return m.extractExtensionClassic(); });
    }
    bool removeExtensionUniversal() {
        return onRest(false, true, [](FilePathModel& m) { return m.removeExtensionClassic(); });
    }
    bool changeExtensionUniversal(const std::string& extension) {
        return onRest(true, true,
                      [&](FilePathModel& m) { return m.changeExtensionClassic(extension); });
    }

    // The public forms, which pick the grammar.
    bool hasDrive() const {
        return !path.empty() && (isUniversal() ? hasDriveUniversal() : hasDriveClassic());
    }
    bool extractDrive() {
        return !path.empty() && (isUniversal() ? extractDriveUniversal() : extractDriveClassic());
    }
    bool removeDrive() { return isUniversal() ? removeDriveUniversal() : removeDriveClassic(); }
    bool hasFilename() const {
        return !path.empty() && (isUniversal() ? hasFilenameUniversal() : hasFilenameClassic());
    }
    bool extractFilename() {
        return !path.empty() &&
               (isUniversal() ? extractFilenameUniversal() : extractFilenameClassic());
    }
    bool removeFilename() {
        return isUniversal() ? removeFilenameUniversal() : removeFilenameClassic();
    }
    bool changeFilename(const std::string& name) {
        return isUniversal() ? changeFilenameUniversal(name) : changeFilenameClassic(name);
    }
    bool hasExtension() const {
        return !path.empty() && (isUniversal() ? hasExtensionUniversal() : hasExtensionClassic());
    }
    bool extractExtension() {
        return !path.empty() &&
               (isUniversal() ? extractExtensionUniversal() : extractExtensionClassic());
    }
    bool removeExtension() {
        return isUniversal() ? removeExtensionUniversal() : removeExtensionClassic();
    }
    bool changeExtension(const std::string& extension) {
        return !path.empty() && (isUniversal() ? changeExtensionUniversal(extension)
                                               : changeExtensionClassic(extension));
    }

    bool extractFirstDirectory() {
        removeDrive();
        removeLeadingSlash();
        const std::size_t end = path.find_first_of("/\\", 1);
        if (end != std::string::npos)
            path.resize(end);
        return true;
    }
    bool removeFirstDirectory() {
        removeDrive();
        removeLeadingSlash();
        const std::size_t end = path.find_first_of("/\\", 1);
        path = end == std::string::npos ? "" : path.substr(end + 1);
        return true;
    }
    bool removeLastDirectory() {
        std::string head = path;
        if (!head.empty())
            head.pop_back();
        const std::size_t last = head.find_last_of("/\\");
        path = last == std::string::npos ? "" : path.substr(0, last + 1);
        return true;
    }

    char makeSlash(int system) const {
        if (system == 1)
            return '/';
        if (system == 2)
            return '\\';
        const std::size_t first = path.find_first_of("/\\");
        return first == std::string::npos ? '/' : path[first];
    }
    bool validateSlashes(int system) const {
        const char expected = FilePathModel().makeSlash(system);
        return std::all_of(path.begin(), path.end(),
                           [expected](char c) { return !slash(c) || c == expected; });
    }
    bool convertSlashes(int system) {
        for (char& c : path)
            if (slash(c))
                c = system == 2 ? '\\' : '/';
        return true;
    }
    bool addLeadingSlash(int system) {
        if (path.empty() || !slash(path.front()))
            path = std::string(1, makeSlash(system)) + path;
        return true;
    }
    bool addTrailingSlash(int system) {
        if (path.empty() || !slash(path.back()))
            path += makeSlash(system);
        return true;
    }
    bool removeLeadingSlash() {
        if (!path.empty() && slash(path.front()))
            path = path.substr(1);
        return true;
    }
    bool removeTrailingSlash() {
        if (!path.empty() && slash(path.back()))
            path.pop_back();
        return true;
    }
    bool addLeadingPeriod() {
        if (path.empty() || path.front() != '.')
            path = "." + path;
        return true;
    }
};

#endif
