// Every operation of file paths against a plain model that walks over a std::string. The input is a
// program: its first byte tells how many of the next bytes are the path, each further byte is an
// operation, and those that take a text take it from the end of the input.

#include "OCFilePath.h"

#include "../tests/support/FilePathModel.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool condition, const char* what, int operation, const std::string& path) {
    if (!condition) {
        fprintf(stderr, "violated: %s after operation %d of [%s]\n", what, operation, path.c_str());
        abort();
    }
}

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

// The public form throws where the model says false.
template<class Action>
bool done(Action action) {
    try {
        action();
        return true;
    } catch (const OXFilePath&) {
        return false;
    }
}

constexpr int operationCount = 45;

bool apply(OCFilePath& path, int operation, int system, const OCAnsiString& text) {
    const OEFilePathSystem slashes = static_cast<OEFilePathSystem>(system);
    switch (operation) {
    case 0:
        return path.extractDriveClassic();
    case 1:
        return path.extractDriveUniversal();
    case 2:
        return path.removeDriveClassic();
    case 3:
        return path.removeDriveUniversal();
    case 4:
        return path.extractFilenameClassic();
    case 5:
        return path.extractFilenameUniversal();
    case 6:
        return path.removeFilenameClassic();
    case 7:
        return path.removeFilenameUniversal();
    case 8:
        return path.changeFilenameClassic(text);
    case 9:
        return path.changeFilenameUniversal(text);
    case 10:
        return path.extractExtensionClassic();
    case 11:
        return path.extractExtensionUniversal();
    case 12:
        return path.removeExtensionClassic();
    case 13:
        return path.removeExtensionUniversal();
    case 14:
        return path.changeExtensionClassic(text);
    case 15:
        return path.changeExtensionUniversal(text);
    case 16:
        return done([&] { path.extractDrive(); });
    case 17:
        return done([&] { path.removeDrive(); });
    case 18:
        return done([&] { path.extractFilename(); });
    case 19:
        return done([&] { path.removeFilename(); });
    case 20:
        return done([&] { path.changeFilename(text); });
    case 21:
        return done([&] { path.extractExtension(); });
    case 22:
        return done([&] { path.removeExtension(); });
    case 23:
        return done([&] { path.changeExtension(text); });
    case 24:
        return done([&] { path.extractFirstDirectory(); });
    case 25:
        return done([&] { path.removeFirstDirectory(); });
    case 26:
        return done([&] { path.removeLastDirectory(); });
    case 27:
        return done([&] { path.convertSlashes(slashes); });
    case 28:
        return done([&] { path.addLeadingSlash(slashes); });
    case 29:
        return done([&] { path.addTrailingSlash(slashes); });
    case 30:
        return done([&] { path.removeLeadingSlash(); });
    case 31:
        return done([&] { path.removeTrailingSlash(); });
    case 32:
        return done([&] { path.addLeadingPeriod(); });
    case 33:
        return path.isUniversal();
    case 34:
        return path.isRelative();
    case 35:
        return path.hasDrive();
    case 36:
        return path.hasDriveClassic();
    case 37:
        return path.hasDriveUniversal();
    case 38:
        return path.hasFilename();
    case 39:
        return path.hasFilenameClassic();
    case 40:
        return path.hasFilenameUniversal();
    case 41:
        return path.hasExtension();
    case 42:
        return path.hasExtensionClassic();
    case 43:
        return path.hasExtensionUniversal();
    default:
        return path.validateSlashes(slashes) && path.makeSlash(slashes) == '/';
    }
}

bool apply(FilePathModel& path, int operation, int system, const std::string& text) {
    switch (operation) {
    case 0:
        return path.extractDriveClassic();
    case 1:
        return path.extractDriveUniversal();
    case 2:
        return path.removeDriveClassic();
    case 3:
        return path.removeDriveUniversal();
    case 4:
        return path.extractFilenameClassic();
    case 5:
        return path.extractFilenameUniversal();
    case 6:
        return path.removeFilenameClassic();
    case 7:
        return path.removeFilenameUniversal();
    case 8:
        return path.changeFilenameClassic(text);
    case 9:
        return path.changeFilenameUniversal(text);
    case 10:
        return path.extractExtensionClassic();
    case 11:
        return path.extractExtensionUniversal();
    case 12:
        return path.removeExtensionClassic();
    case 13:
        return path.removeExtensionUniversal();
    case 14:
        return path.changeExtensionClassic(text);
    case 15:
        return path.changeExtensionUniversal(text);
    case 16:
        return path.extractDrive();
    case 17:
        return path.removeDrive();
    case 18:
        return path.extractFilename();
    case 19:
        return path.removeFilename();
    case 20:
        return path.changeFilename(text);
    case 21:
        return path.extractExtension();
    case 22:
        return path.removeExtension();
    case 23:
        return path.changeExtension(text);
    case 24:
        return path.extractFirstDirectory();
    case 25:
        return path.removeFirstDirectory();
    case 26:
        return path.removeLastDirectory();
    case 27:
        return path.convertSlashes(system);
    case 28:
        return path.addLeadingSlash(system);
    case 29:
        return path.addTrailingSlash(system);
    case 30:
        return path.removeLeadingSlash();
    case 31:
        return path.removeTrailingSlash();
    case 32:
        return path.addLeadingPeriod();
    case 33:
        return path.isUniversal();
    case 34:
        return path.isRelative();
    case 35:
        return path.hasDrive();
    case 36:
        return path.hasDriveClassic();
    case 37:
        return path.hasDriveUniversal();
    case 38:
        return path.hasFilename();
    case 39:
        return path.hasFilenameClassic();
    case 40:
        return path.hasFilenameUniversal();
    case 41:
        return path.hasExtension();
    case 42:
        return path.hasExtensionClassic();
    case 43:
        return path.hasExtensionUniversal();
    default:
        return path.validateSlashes(system) && path.makeSlash(system) == '/';
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string start = input.substr(0, data[0]);
    const std::string program = input.substr(start.size());

    OCFilePath path(OCAnsiString(start.data(), start.size()));
    FilePathModel model{start};
    for (std::size_t i = 0; i < program.size() && i < 64; ++i) {
        const int code = static_cast<unsigned char>(program[i]);
        const int operation = code % operationCount;
        const int system = code / operationCount % 4;
        // Between nothing and the last 40 bytes.
        const std::size_t count = std::min<std::size_t>(program.size(), i * 7 % 41);
        const std::string text = program.substr(program.size() - count);

        const std::string before = model.path;
        const bool expected = apply(model, operation, system, text);
        const bool result = apply(path, operation, system, OCAnsiString(text.data(), text.size()));
        require(result == expected, "the result", operation, before);
        require(standard(path) == model.path, "the path", operation, before);
        const bool query = operation >= 33;
        require((expected && !query) || standard(path) == before, "unchanged", operation, before);
        require(path.getString()[path.getLength()] == 0, "the end", operation, before);
        // The file system may be asked about any path.
        if (operation == 44) {
            path.existsFile(system & 1);
            path.existsDirectory(system & 1);
        }
    }

    // A filename and what stands before it are the whole; so are an extension and what it extends.
    OCFilePath directory(path);
    OCFilePath filename(path);
    OCFilePath base(path);
    OCFilePath extension(path);
    if (path.hasFilename()) {
        directory.removeFilename();
        filename.extractFilename();
        require(directory + filename == path, "filename", -1, model.path);
    }
    if (path.hasExtension()) {
        base.removeExtension();
        extension.extractExtension();
        require(base + extension == path, "extension", -1, model.path);
    }
    if (path.hasDrive()) {
        OCFilePath drive(path);
        OCFilePath rest(path);
        drive.extractDrive();
        rest.removeDrive();
        require(drive + rest == path, "drive", -1, model.path);
    }
    return 0;
}
