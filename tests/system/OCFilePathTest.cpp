#include "OCFilePath.h"

#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/FilePathModel.h"
#include "support/Slots.h"
#include "support/StatFaults.h"
#include "support/TimeFaults.h"

#include <chrono>
#include <climits>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <sys/socket.h>
#include <sys/un.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace {

std::string standard(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

OCFilePath pathOf(const std::string& text) {
    return OCFilePath(OCAnsiString(text.data(), text.size()));
}

// What an operation makes of a path; "!" and the path when it says false, "?" and the name of the
// exception's class when it throws, which has to leave the path alone.
template<class Operation>
std::string result(const std::string& text, Operation operation) {
    OCFilePath path = pathOf(text);
    try {
        operation(path);
    } catch (const OXFilePath& failure) {
        EXPECT_EQ(standard(path), text);
        return "?" + standard(failure.getClass()).substr(strlen("OXFilePath_"));
    }
    return standard(path);
}
#define RESULT(text, operation) result(text, [](OCFilePath& subject) { subject.operation; })

template<class Operation>
std::string variant(const std::string& text, Operation operation) {
    OCFilePath path = pathOf(text);
    if (operation(path))
        return standard(path);
    EXPECT_EQ(standard(path), text);
    return "!";
}
#define VARIANT(text, operation)                                                                   \
    variant(text, [](OCFilePath& subject) { return subject.operation; })

// Layout and construction

TEST(OCFilePathTest, AddsNeitherFieldsNorSlotsToItsString) {
    EXPECT_EQ(sizeof(OCFilePath), 168U);
    EXPECT_EQ(sizeof(OCFilePath), sizeof(OCAnsiString));
    static_assert(std::is_base_of_v<OCAnsiString, OCFilePath>);
    EXPECT_EQ(slots::slotCount<OCFilePath>(), 2U);
}

TEST(OCFilePathTest, EnumerationsAreOf32BitsWithFixedValues) {
    static_assert(sizeof(OEFilePathSystem) == 4 && sizeof(OEFileType) == 4);
    static_assert(FilePathSystemAutomatic == 0 && FilePathSystemUnix == 1);
    static_assert(FilePathSystemWindows == 2);
    static_assert(FileTypeBlockDevice == 0 && FileTypeCharacterDevice == 1);
    static_assert(FileTypeDirectory == 2 && FileTypeSymbolicLink == 3 && FileTypeFifo == 4);
    static_assert(FileTypeRegular == 5 && FileTypeSocket == 6 && FileTypeUnknown == 7);
}

TEST(OCFilePathTest, IsMadeFromTexts) {
    EXPECT_EQ(standard(OCFilePath()), "");
    EXPECT_EQ(standard(OCFilePath("a/b")), "a/b");
    EXPECT_EQ(standard(OCFilePath(OCAnsiString("a/b"))), "a/b");
    const OCAnsiString text("a/b");
    const OCFilePath path = text;
    EXPECT_EQ(standard(path), "a/b");
    const OCFilePath copy(path);
    EXPECT_EQ(standard(copy), "a/b");
    OCFilePath assigned;
    assigned = path;
    EXPECT_EQ(standard(assigned), "a/b");
    assigned = "c";
    EXPECT_EQ(standard(assigned), "c");
    assigned = text;
    EXPECT_EQ(standard(assigned), "a/b");
    assigned = path / "d";
    EXPECT_EQ(standard(assigned), "a/b/d");
    assigned.assign("e");
    EXPECT_EQ(standard(assigned), "e");
}

TEST(OCFilePathTest, MovesTakeTheContent) {
    const std::string name(300, 'n');
    OCFilePath path = pathOf(name);
    const unsigned long before = fault::heapRecord().requests;
    OCFilePath moved(std::move(path));
    OCFilePath again;
    again = std::move(moved);
    OCAnsiString text(static_cast<OCAnsiString&&>(again));
    OCFilePath back(std::move(text));
    EXPECT_EQ(fault::heapRecord().requests, before);
    EXPECT_EQ(standard(back), name);
    EXPECT_EQ(standard(path) + standard(moved) + standard(again) + standard(text), "");
    static_assert(std::is_nothrow_move_constructible_v<OCFilePath>);
    static_assert(std::is_nothrow_move_assignable_v<OCFilePath>);
    static_assert(std::is_nothrow_destructible_v<OCFilePath>);
}

TEST(OCFilePathTest, MutatingOperationsReturnThePath) {
    OCFilePath path("/a/b.c");
    EXPECT_EQ(&path.convertSlashesUnix(), &path);
    EXPECT_EQ(&path.convertSlashesWindows(), &path);
    EXPECT_EQ(&path.convertSlashes(FilePathSystemUnix), &path);
    EXPECT_EQ(&path.addLeadingSlash(FilePathSystemUnix), &path);
    EXPECT_EQ(&path.addTrailingSlash(FilePathSystemUnix), &path);
    EXPECT_EQ(&path.removeTrailingSlash(), &path);
    EXPECT_EQ(&path.removeLeadingSlash(), &path);
    EXPECT_EQ(&path.addLeadingPeriod(), &path);
    EXPECT_EQ(&path.removeDrive(), &path);
    EXPECT_EQ(&path.changeFilename("d:x.y"), &path);
    EXPECT_EQ(&path.changeExtension("z"), &path);
    EXPECT_EQ(&path.removeExtension(), &path);
    EXPECT_EQ(&path.removeFilename(), &path);
    EXPECT_EQ(&(path = "c:/d/e.f").removeLastDirectory(), &path);
    EXPECT_EQ(&path.removeFirstDirectory(), &path);
    EXPECT_EQ(&(path = "c:/d/e.f").extractFirstDirectory(), &path);
    EXPECT_EQ(&path.extractFilename(), &path);
    EXPECT_EQ(&(path = "e.f").extractExtension(), &path);
    EXPECT_EQ(&(path = "c:x").extractDrive(), &path);
    EXPECT_EQ(standard(path), "c:");
}

// Characters

TEST(OCFilePathTest, KnowsSlashesColonsAndPeriods) {
    for (int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        EXPECT_EQ(OCFilePath::testSlash(c), i == '/' || i == '\\') << i;
        EXPECT_EQ(OCFilePath::testColon(c), i == ':') << i;
        EXPECT_EQ(OCFilePath::testPeriod(c), i == '.') << i;
    }
}

// Slashes

TEST(OCFilePathTest, ConvertsSlashes) {
    const char path[] = "/a\\b//c\\\\d:e.f";
    EXPECT_EQ(RESULT(path, convertSlashesUnix()), "/a/b//c//d:e.f");
    EXPECT_EQ(RESULT(path, convertSlashesWindows()), "\\a\\b\\\\c\\\\d:e.f");
    EXPECT_EQ(RESULT(path, convertSlashes(FilePathSystemAutomatic)), "/a/b//c//d:e.f");
    EXPECT_EQ(RESULT(path, convertSlashes(FilePathSystemUnix)), "/a/b//c//d:e.f");
    EXPECT_EQ(RESULT(path, convertSlashes(FilePathSystemWindows)), "\\a\\b\\\\c\\\\d:e.f");
    EXPECT_EQ(RESULT(path, convertSlashes(static_cast<OEFilePathSystem>(9))), "/a/b//c//d:e.f");
    EXPECT_EQ(RESULT("\\a", convertSlashes(FilePathSystemAutomatic)), "/a");
    EXPECT_EQ(RESULT("", convertSlashesUnix()), "");
    EXPECT_EQ(RESULT("", convertSlashesWindows()), "");
}

TEST(OCFilePathTest, MakesTheSlashOfASystem) {
    struct {
        const char* path;
        char automatic;
    } const cases[] = {{"", '/'},       {"abc", '/'},     {"a\\b", '\\'},   {"a/b", '/'},
                       {"a/b\\c", '/'}, {"a\\b/c", '\\'}, {"c:name.x", '/'}};
    for (const auto& one : cases) {
        const OCFilePath path(one.path);
        EXPECT_EQ(path.makeSlashAutomatic(), one.automatic) << one.path;
        EXPECT_EQ(path.makeSlash(FilePathSystemAutomatic), one.automatic) << one.path;
        EXPECT_EQ(path.makeSlash(FilePathSystemUnix), '/') << one.path;
        EXPECT_EQ(path.makeSlash(FilePathSystemWindows), '\\') << one.path;
        EXPECT_EQ(path.makeSlash(static_cast<OEFilePathSystem>(3)), one.automatic) << one.path;
        EXPECT_EQ(path.makeSlash(static_cast<OEFilePathSystem>(-1)), one.automatic) << one.path;
    }
}

TEST(OCFilePathTest, ValidatesSlashesAgainstThoseOfAnEmptyPath) {
    struct {
        const char* path;
        bool automatic, unixStyle, windows;
    } const cases[] = {{"", true, true, true},          {"abc", true, true, true},
                       {"a/b/c", true, true, false},    {"a\\b", false, false, true},
                       {"a/b\\c", false, false, false}, {"\\", false, false, true},
                       {"a/b/", true, true, false}};
    for (const auto& one : cases) {
        const OCFilePath path(one.path);
        EXPECT_EQ(path.validateSlashes(FilePathSystemAutomatic), one.automatic) << one.path;
        EXPECT_EQ(path.validateSlashes(FilePathSystemUnix), one.unixStyle) << one.path;
        EXPECT_EQ(path.validateSlashes(FilePathSystemWindows), one.windows) << one.path;
        EXPECT_EQ(path.validateSlashes(static_cast<OEFilePathSystem>(7)), one.automatic);
    }
}

TEST(OCFilePathTest, KnowsLeadingAndTrailingSlashesAndPeriods) {
    struct {
        const char* path;
        bool leading, trailing, period;
    } const cases[] = {
        {"", false, false, false},  {"/", true, true, false},   {"\\", true, true, false},
        {"a", false, false, false}, {"/a", true, false, false}, {"a\\", false, true, false},
        {".", false, false, true},  {".a/", false, true, true}, {"a.", false, false, false}};
    for (const auto& one : cases) {
        const OCFilePath path(one.path);
        EXPECT_EQ(path.hasLeadingSlash(), one.leading) << one.path;
        EXPECT_EQ(path.hasTrailingSlash(), one.trailing) << one.path;
        EXPECT_EQ(path.hasLeadingPeriod(), one.period) << one.path;
    }
}

TEST(OCFilePathTest, AddsALeadingSlashUnlessThereIsOne) {
    EXPECT_EQ(RESULT("", addLeadingSlash(FilePathSystemAutomatic)), "/");
    EXPECT_EQ(RESULT("", addLeadingSlash(FilePathSystemWindows)), "\\");
    EXPECT_EQ(RESULT("a", addLeadingSlash(FilePathSystemAutomatic)), "/a");
    EXPECT_EQ(RESULT("a\\b", addLeadingSlash(FilePathSystemAutomatic)), "\\a\\b");
    EXPECT_EQ(RESULT("a\\b", addLeadingSlash(FilePathSystemUnix)), "/a\\b");
    EXPECT_EQ(RESULT("a/b", addLeadingSlash(FilePathSystemWindows)), "\\a/b");
    EXPECT_EQ(RESULT("/a", addLeadingSlash(FilePathSystemWindows)), "/a");
    EXPECT_EQ(RESULT("\\a", addLeadingSlash(FilePathSystemUnix)), "\\a");
}

TEST(OCFilePathTest, AddsATrailingSlashUnlessThereIsOne) {
    EXPECT_EQ(RESULT("", addTrailingSlash(FilePathSystemAutomatic)), "/");
    EXPECT_EQ(RESULT("", addTrailingSlash(FilePathSystemWindows)), "\\");
    EXPECT_EQ(RESULT("a", addTrailingSlash(FilePathSystemAutomatic)), "a/");
    EXPECT_EQ(RESULT("a\\b", addTrailingSlash(FilePathSystemAutomatic)), "a\\b\\");
    EXPECT_EQ(RESULT("a\\b", addTrailingSlash(FilePathSystemUnix)), "a\\b/");
    EXPECT_EQ(RESULT("a/b", addTrailingSlash(FilePathSystemWindows)), "a/b\\");
    EXPECT_EQ(RESULT("a/", addTrailingSlash(FilePathSystemWindows)), "a/");
    EXPECT_EQ(RESULT("a\\", addTrailingSlash(FilePathSystemUnix)), "a\\");
    EXPECT_EQ(RESULT("/", addTrailingSlash(FilePathSystemUnix)), "/");
}

TEST(OCFilePathTest, RemovesOneSlashAtAnEnd) {
    EXPECT_EQ(RESULT("//a//", removeLeadingSlash()), "/a//");
    EXPECT_EQ(RESULT("//a//", removeTrailingSlash()), "//a/");
    EXPECT_EQ(RESULT("\\a\\", removeLeadingSlash()), "a\\");
    EXPECT_EQ(RESULT("\\a\\", removeTrailingSlash()), "\\a");
    EXPECT_EQ(RESULT("/", removeLeadingSlash()), "");
    EXPECT_EQ(RESULT("/", removeTrailingSlash()), "");
    EXPECT_EQ(RESULT("a", removeLeadingSlash()), "a");
    EXPECT_EQ(RESULT("a", removeTrailingSlash()), "a");
    EXPECT_EQ(RESULT("", removeLeadingSlash()), "");
    EXPECT_EQ(RESULT("", removeTrailingSlash()), "");
}

TEST(OCFilePathTest, AddsALeadingPeriodUnlessThereIsOne) {
    EXPECT_EQ(RESULT("txt", addLeadingPeriod()), ".txt");
    EXPECT_EQ(RESULT(".txt", addLeadingPeriod()), ".txt");
    EXPECT_EQ(RESULT("..", addLeadingPeriod()), "..");
    EXPECT_EQ(RESULT("", addLeadingPeriod()), ".");
    EXPECT_EQ(RESULT("a.b", addLeadingPeriod()), ".a.b");
}

// Which grammar

TEST(OCFilePathTest, KnowsNetworkPaths) {
    for (const char* path : {"//server/share", "\\\\server\\share\\dir\\f.x", "///", "//a/", "//:/",
                             "/\\a\\", "\\/a/b/c", "////"})
        EXPECT_TRUE(OCFilePath(path).isUniversal()) << path;
    for (const char* path : {"", "/", "//", "//server", "a", "ab", "/a/b/c", "a//b/c", "/a//",
                             "c://a/b", "\\\\server"})
        EXPECT_FALSE(OCFilePath(path).isUniversal()) << path;
}

TEST(OCFilePathTest, KnowsRelativePaths) {
    for (const char* path : {"", "a", "dir/file", "dir\\file", ".", "..", "./a", "a/c:", "a/b:c/d"})
        EXPECT_TRUE(OCFilePath(path).isRelative()) << path;
    for (const char* path : {"/", "/dir", "\\dir", "c:dir", "c:", ":", "C:\\dir\\file.txt", "ab:/",
                             "//server/share", "//server", "/home/user/a.tar.gz"})
        EXPECT_FALSE(OCFilePath(path).isRelative()) << path;
}

// The classic grammar

struct Row {
    const char* path;
    const char* drive;            // extractDrive
    const char* withoutDrive;     // removeDrive
    const char* filename;         // extractFilename
    const char* withoutFilename;  // removeFilename
    const char* otherFilename;    // changeFilename("n.m")
    const char* extension;        // extractExtension
    const char* withoutExtension; // removeExtension
    const char* otherExtension;   // changeExtension("x")
};

// "!" stands for an operation that fails.
const Row classicRows[] = {
    {"a", "!", "a", "a", "", "n.m", "!", "a", "a.x"},
    {"a.b", "!", "a.b", "a.b", "", "n.m", ".b", "a", "a.x"},
    {"a.b.c", "!", "a.b.c", "a.b.c", "", "n.m", ".c", "a.b", "a.b.x"},
    {".profile", "!", ".profile", ".profile", "", "n.m", ".profile", "", ".x"},
    {".", "!", ".", ".", "", "n.m", ".", "", ".x"},
    {"..", "!", "..", "..", "", "n.m", ".", ".", "..x"},
    {"a.", "!", "a.", "a.", "", "n.m", ".", "a", "a.x"},
    {"/", "!", "/", "!", "/", "/n.m", "!", "/", "!"},
    {"dir/", "!", "dir/", "!", "dir/", "dir/n.m", "!", "dir/", "!"},
    {"dir.d/", "!", "dir.d/", "!", "dir.d/", "dir.d/n.m", "!", "dir.d/", "!"},
    {"dir.d/file", "!", "dir.d/file", "file", "dir.d/", "dir.d/n.m", "!", "dir.d/file",
     "dir.d/file.x"},
    {"dir/.a", "!", "dir/.a", ".a", "dir/", "dir/n.m", ".a", "dir/", "dir/.x"},
    {"/home/user/a.tar.gz", "!", "/home/user/a.tar.gz", "a.tar.gz", "/home/user/", "/home/user/n.m",
     ".gz", "/home/user/a.tar", "/home/user/a.tar.x"},
    {"C:\\dir\\file.txt", "C:", "\\dir\\file.txt", "file.txt", "C:\\dir\\", "C:\\dir\\n.m", ".txt",
     "C:\\dir\\file", "C:\\dir\\file.x"},
    {"C:", "C:", "", "!", "C:", "C:n.m", "!", "C:", "!"},
    {":", ":", "", "!", ":", ":n.m", "!", ":", "!"},
    {"C:f.e", "C:", "f.e", "f.e", "C:", "C:n.m", ".e", "C:f", "C:f.x"},
    {"a.b:c", "a.b:", "c", "c", "a.b:", "a.b:n.m", "!", "a.b:c", "a.b:c.x"},
    {"dev:dir:f.e", "dev:", "dir:f.e", "f.e", "dev:dir:", "dev:dir:n.m", ".e", "dev:dir:f",
     "dev:dir:f.x"},
    {"dir/c:f.e", "!", "dir/c:f.e", "f.e", "dir/c:", "dir/c:n.m", ".e", "dir/c:f", "dir/c:f.x"},
    {"/c:", "!", "/c:", "!", "/c:", "/c:n.m", "!", "/c:", "!"},
    {"//server", "!", "//server", "server", "//", "//n.m", "!", "//server", "//server.x"},
    {"//", "!", "//", "!", "//", "//n.m", "!", "//", "!"},
};

const Row universalRows[] = {
    {"\\\\server\\share\\dir\\f.x", "\\\\server\\share", "\\dir\\f.x", "f.x",
     "\\\\server\\share\\dir\\", "\\\\server\\share\\dir\\n.m", ".x", "\\\\server\\share\\dir\\f",
     "\\\\server\\share\\dir\\f.x"},
    {"\\\\server\\share", "\\\\server\\share", "", "!", "\\\\server\\share",
     "\\\\server\\share\\n.m", "!", "\\\\server\\share", "!"},
    {"//server/share", "//server/share", "", "!", "//server/share", "//server/share/n.m", "!",
     "//server/share", "!"},
    {"//server/share.d", "//server/share.d", "", "!", "//server/share.d", "//server/share.d/n.m",
     "!", "//server/share.d", "!"},
    {"//server/share/", "//server/share", "/", "!", "//server/share/", "//server/share/n.m", "!",
     "//server/share/", "!"},
    {"//server/share/f", "//server/share", "/f", "f", "//server/share/", "//server/share/n.m", "!",
     "//server/share/f", "//server/share/f.x"},
    {"//s.t/h.i/.p", "//s.t/h.i", "/.p", ".p", "//s.t/h.i/", "//s.t/h.i/n.m", ".p", "//s.t/h.i/",
     "//s.t/h.i/.x"},
    {"//s/h/a:b.c", "//s/h", "/a:b.c", "b.c", "//s/h/a:", "//s/h/a:n.m", ".c", "//s/h/a:b",
     "//s/h/a:b.x"},
    {"//s/h/d.d/f", "//s/h", "/d.d/f", "f", "//s/h/d.d/", "//s/h/d.d/n.m", "!", "//s/h/d.d/f",
     "//s/h/d.d/f.x"},
    {"//s/h/a:", "//s/h", "/a:", "!", "//s/h/a:", "//s/h/a:n.m", "!", "//s/h/a:", "!"},
    {"//s/c:h", "//s/c:h", "", "!", "//s/c:h", "//s/c:h/n.m", "!", "//s/c:h", "!"},
    {"///", "///", "", "!", "///", "///n.m", "!", "///", "!"},
    {"////", "///", "/", "!", "////", "////n.m", "!", "////", "!"},
    {"/\\\\/a", "/\\\\", "/a", "a", "/\\\\/", "/\\\\/n.m", "!", "/\\\\/a", "/\\\\/a.x"},
};

std::string failing(const char* expected, const char* failure) {
    return strcmp(expected, "!") == 0 ? std::string("?") + failure : expected;
}

void checkPublicOperations(const Row& row) {
    SCOPED_TRACE(row.path);
    const OCFilePath path(row.path);
    EXPECT_EQ(path.hasDrive(), strcmp(row.drive, "!") != 0);
    EXPECT_EQ(path.hasFilename(), strcmp(row.filename, "!") != 0);
    EXPECT_EQ(path.hasExtension(), strcmp(row.extension, "!") != 0);
    EXPECT_EQ(RESULT(row.path, extractDrive()), failing(row.drive, "ExtractDriveError"));
    EXPECT_EQ(RESULT(row.path, removeDrive()), row.withoutDrive);
    EXPECT_EQ(RESULT(row.path, extractFilename()), failing(row.filename, "ExtractFilenameError"));
    EXPECT_EQ(RESULT(row.path, removeFilename()), row.withoutFilename);
    EXPECT_EQ(RESULT(row.path, changeFilename("n.m")), row.otherFilename);
    EXPECT_EQ(RESULT(row.path, extractExtension()),
              failing(row.extension, "ExtractExtensionError"));
    EXPECT_EQ(RESULT(row.path, removeExtension()), row.withoutExtension);
    const std::string extended = failing(row.otherExtension, "ChangeExtensionError");
    EXPECT_EQ(RESULT(row.path, changeExtension("x")), extended);
    EXPECT_EQ(RESULT(row.path, changeExtension(".x")), extended);
}

TEST(OCFilePathTest, TakesClassicPathsApart) {
    for (const Row& row : classicRows) {
        checkPublicOperations(row);
        SCOPED_TRACE(row.path);
        EXPECT_FALSE(OCFilePath(row.path).isUniversal());
        EXPECT_EQ(OCFilePath(row.path).hasDriveClassic(), strcmp(row.drive, "!") != 0);
        EXPECT_EQ(OCFilePath(row.path).hasFilenameClassic(), strcmp(row.filename, "!") != 0);
        EXPECT_EQ(OCFilePath(row.path).hasExtensionClassic(), strcmp(row.extension, "!") != 0);
        EXPECT_EQ(VARIANT(row.path, extractDriveClassic()), row.drive);
        EXPECT_EQ(VARIANT(row.path, removeDriveClassic()), row.withoutDrive);
        EXPECT_EQ(VARIANT(row.path, extractFilenameClassic()), row.filename);
        EXPECT_EQ(VARIANT(row.path, removeFilenameClassic()), row.withoutFilename);
        EXPECT_EQ(VARIANT(row.path, changeFilenameClassic("n.m")), row.otherFilename);
        EXPECT_EQ(VARIANT(row.path, extractExtensionClassic()), row.extension);
        EXPECT_EQ(VARIANT(row.path, removeExtensionClassic()), row.withoutExtension);
        EXPECT_EQ(VARIANT(row.path, changeExtensionClassic("x")), row.otherExtension);
        EXPECT_EQ(VARIANT(row.path, changeExtensionClassic(".x")), row.otherExtension);
    }
}

TEST(OCFilePathTest, TakesNetworkPathsApart) {
    for (const Row& row : universalRows) {
        checkPublicOperations(row);
        SCOPED_TRACE(row.path);
        EXPECT_TRUE(OCFilePath(row.path).isUniversal());
        EXPECT_TRUE(OCFilePath(row.path).hasDriveUniversal());
        EXPECT_EQ(OCFilePath(row.path).hasFilenameUniversal(), strcmp(row.filename, "!") != 0);
        EXPECT_EQ(OCFilePath(row.path).hasExtensionUniversal(), strcmp(row.extension, "!") != 0);
        EXPECT_EQ(VARIANT(row.path, extractDriveUniversal()), row.drive);
        EXPECT_EQ(VARIANT(row.path, removeDriveUniversal()), row.withoutDrive);
        EXPECT_EQ(VARIANT(row.path, extractFilenameUniversal()), row.filename);
        EXPECT_EQ(VARIANT(row.path, removeFilenameUniversal()), row.withoutFilename);
        EXPECT_EQ(VARIANT(row.path, changeFilenameUniversal("n.m")), row.otherFilename);
        EXPECT_EQ(VARIANT(row.path, extractExtensionUniversal()), row.extension);
        EXPECT_EQ(VARIANT(row.path, removeExtensionUniversal()), row.withoutExtension);
        EXPECT_EQ(VARIANT(row.path, changeExtensionUniversal("x")), row.otherExtension);
        EXPECT_EQ(VARIANT(row.path, changeExtensionUniversal(".x")), row.otherExtension);
    }
}

TEST(OCFilePathTest, AnEmptyPathHasNothing) {
    const OCFilePath path;
    EXPECT_FALSE(path.hasDrive());
    EXPECT_FALSE(path.hasFilename());
    EXPECT_FALSE(path.hasExtension());
    EXPECT_FALSE(path.existsFile(true));
    EXPECT_FALSE(path.existsDirectory(true));
    EXPECT_TRUE(path.isRelative());
    EXPECT_FALSE(path.isUniversal());
    EXPECT_EQ(RESULT("", extractDrive()), "?ExtractDriveError");
    EXPECT_EQ(RESULT("", extractFilename()), "?ExtractFilenameError");
    EXPECT_EQ(RESULT("", extractExtension()), "?ExtractExtensionError");
    EXPECT_EQ(RESULT("", changeExtension("x")), "?ChangeExtensionError");
    EXPECT_EQ(RESULT("", removeDrive()), "");
    EXPECT_EQ(RESULT("", removeExtension()), "");
    EXPECT_EQ(RESULT("", removeFilename()), "");
    EXPECT_EQ(RESULT("", changeFilename("n")), "n");
    EXPECT_EQ(RESULT("", extractFirstDirectory()), "");
    EXPECT_EQ(RESULT("", removeFirstDirectory()), "");
    EXPECT_EQ(RESULT("", removeLastDirectory()), "");
}

TEST(OCFilePathTest, TheFormsForOneGrammarHaveTheirOwnMindOnEmptyPaths) {
    const OCFilePath path;
    EXPECT_FALSE(path.hasDriveClassic());
    EXPECT_FALSE(path.hasFilenameClassic());
    EXPECT_FALSE(path.hasExtensionClassic());
    EXPECT_EQ(VARIANT("", extractDriveClassic()), "!");
    EXPECT_EQ(VARIANT("", removeDriveClassic()), "");
    EXPECT_EQ(VARIANT("", extractFilenameClassic()), "");
    EXPECT_EQ(VARIANT("", removeFilenameClassic()), "");
    EXPECT_EQ(VARIANT("", changeFilenameClassic("n")), "n");
    EXPECT_EQ(VARIANT("", extractExtensionClassic()), "!");
    EXPECT_EQ(VARIANT("", removeExtensionClassic()), "");
    EXPECT_EQ(VARIANT("", changeExtensionClassic("x")), ".x");
    EXPECT_TRUE(path.hasDriveUniversal());
    EXPECT_FALSE(path.hasFilenameUniversal());
    EXPECT_FALSE(path.hasExtensionUniversal());
    EXPECT_EQ(VARIANT("", extractDriveUniversal()), "");
    EXPECT_EQ(VARIANT("", removeDriveUniversal()), "");
    EXPECT_EQ(VARIANT("", extractFilenameUniversal()), "!");
    EXPECT_EQ(VARIANT("", removeFilenameUniversal()), "");
    EXPECT_EQ(VARIANT("", changeFilenameUniversal("n")), "/n");
    EXPECT_EQ(VARIANT("", extractExtensionUniversal()), "!");
    EXPECT_EQ(VARIANT("", removeExtensionUniversal()), "");
    EXPECT_EQ(VARIANT("", changeExtensionUniversal("x")), "!");
}

TEST(OCFilePathTest, TheUniversalFormsRefuseOtherPaths) {
    for (const char* path : {"a", "C:\\dir\\file.txt", "/a/b/c/d.e", "/a", "a//b//c"}) {
        EXPECT_FALSE(OCFilePath(path).hasDriveUniversal()) << path;
        EXPECT_FALSE(OCFilePath(path).hasFilenameUniversal()) << path;
        EXPECT_FALSE(OCFilePath(path).hasExtensionUniversal()) << path;
        EXPECT_EQ(VARIANT(path, extractDriveUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, removeDriveUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, extractFilenameUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, removeFilenameUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, changeFilenameUniversal("n")), "!") << path;
        EXPECT_EQ(VARIANT(path, extractExtensionUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, removeExtensionUniversal()), "!") << path;
        EXPECT_EQ(VARIANT(path, changeExtensionUniversal("x")), "!") << path;
    }
}

TEST(OCFilePathTest, TheUniversalFormsTakeAServerWithoutAShareAsADrive) {
    EXPECT_TRUE(OCFilePath("//server").hasDriveUniversal());
    EXPECT_EQ(VARIANT("//server", extractDriveUniversal()), "//server");
    EXPECT_EQ(VARIANT("//server", removeDriveUniversal()), "");
    EXPECT_EQ(VARIANT("//server", changeFilenameUniversal("n")), "//server/n");
    EXPECT_EQ(VARIANT("/", extractDriveUniversal()), "/");
    EXPECT_EQ(VARIANT("/", changeFilenameUniversal("n")), "/n");
}

TEST(OCFilePathTest, AUniversalFilenameGetsTheSlashOfItsDrive) {
    EXPECT_EQ(RESULT("\\\\server\\share", changeFilename("x")), "\\\\server\\share\\x");
    EXPECT_EQ(RESULT("//server/share", changeFilename("x")), "//server/share/x");
    EXPECT_EQ(RESULT("/\\server\\share", changeFilename("x")), "/\\server\\share/x");
    EXPECT_EQ(RESULT("//server/share", changeFilename("/x")), "//server/share/x");
    EXPECT_EQ(RESULT("//server/share", changeFilename("\\x")), "//server/share\\x");
    EXPECT_EQ(RESULT("//server/share", changeFilename("")), "//server/share/");
    EXPECT_EQ(RESULT("//server/share/a", changeFilename("")), "//server/share/");
    EXPECT_EQ(RESULT("//server/share/a", changeFilename("b/c")), "//server/share/b/c");
    EXPECT_EQ(RESULT("///", changeFilename("x")), "///x");
}

TEST(OCFilePathTest, AnExtensionMayComeWithOrWithoutItsPeriod) {
    EXPECT_EQ(RESULT("a.b.c", changeExtension("txt")), "a.b.txt");
    EXPECT_EQ(RESULT("a.b.c", changeExtension(".txt")), "a.b.txt");
    EXPECT_EQ(RESULT("name", changeExtension("txt")), "name.txt");
    EXPECT_EQ(RESULT(".profile", changeExtension("txt")), ".txt");
    EXPECT_EQ(RESULT("a.b", changeExtension("")), "a.");
    EXPECT_EQ(RESULT("a.b", changeExtension(".")), "a.");
    EXPECT_EQ(RESULT("a.b", changeExtension("..c")), "a..c");
    EXPECT_EQ(RESULT("//s/h/a.b", changeExtension("")), "//s/h/a.");
    EXPECT_EQ(RESULT("\\\\server\\share\\dir\\f.x", changeExtension("y")),
              "\\\\server\\share\\dir\\f.y");
}

TEST(OCFilePathTest, ClassicFilenamesMayBeAnything) {
    EXPECT_EQ(RESULT("a/b", changeFilename("")), "a/");
    EXPECT_EQ(RESULT("a", changeFilename("")), "");
    EXPECT_EQ(RESULT("a/b", changeFilename("/c/d:e")), "a//c/d:e");
    EXPECT_EQ(RESULT("a:b", changeFilename("c")), "a:c");
}

TEST(OCFilePathTest, ThePathItselfMayBeTheArgument) {
    OCFilePath path("a/b.c");
    path.changeFilename(path);
    EXPECT_EQ(standard(path), "a/a/b.c");
    path = "b.c";
    path.changeExtension(path);
    EXPECT_EQ(standard(path), "b.b.c");
    path = "//s/h";
    path.changeFilename(path);
    EXPECT_EQ(standard(path), "//s/h//s/h");
    path = "//s/h/f.e";
    path.changeExtension(path);
    EXPECT_EQ(standard(path), "//s/h/f.//s/h/f.e");
    path = pathOf(std::string(200, 'x') + ".y");
    path.changeExtension(path);
    EXPECT_EQ(standard(path), std::string(200, 'x') + "." + std::string(200, 'x') + ".y");
}

// Directories

TEST(OCFilePathTest, ExtractsAndRemovesTheFirstDirectory) {
    struct {
        const char *path, *extracted, *removed;
    } const cases[] = {
        {"/usr/local/bin", "usr", "local/bin"},
        {"usr/local/bin", "usr", "local/bin"},
        {"usr", "usr", ""},
        {"/usr", "usr", ""},
        {"/usr/", "usr", ""},
        {"/", "", ""},
        {"//", "/", ""},
        {"//a", "/a", ""},
        {"//server", "/server", ""},
        {"C:\\dir\\file.txt", "dir", "file.txt"},
        {"C:dir\\file.txt", "dir", "file.txt"},
        {"C:", "", ""},
        {"C:\\", "", ""},
        {"C:\\\\a\\b", "\\a", "b"},
        {"\\\\server\\share\\dir\\f", "dir", "f"},
        {"//server/share", "", ""},
        {"//server/share/", "", ""},
        {"//server/share//a/b", "/a", "b"},
        {"a/b:c/d", "a", "b:c/d"},
        {"///", "", ""},
        {"a//b", "a", "/b"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(RESULT(one.path, extractFirstDirectory()), one.extracted) << one.path;
        EXPECT_EQ(RESULT(one.path, removeFirstDirectory()), one.removed) << one.path;
    }
}

TEST(OCFilePathTest, RemovesTheLastDirectory) {
    struct {
        const char *path, *removed;
    } const cases[] = {
        {"/usr/local/bin", "/usr/local/"},
        {"/usr/local/bin/", "/usr/local/"},
        {"/home/user/a.tar.gz", "/home/user/"},
        {"/usr", "/"},
        {"/usr/", "/"},
        {"/", ""},
        {"//", "/"},
        {"bin", ""},
        {"bin/", ""},
        {"a//", "a/"},
        {"a//b", "a//"},
        {"C:\\dir", "C:\\"},
        {"C:dir", ""},
        {"C:\\", ""},
        {"\\\\server\\share", "\\\\server\\"},
        {"//server/share/f", "//server/share/"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(RESULT(one.path, removeLastDirectory()), one.removed) << one.path;
}

TEST(OCFilePathTest, ZeroBytesAreCharactersOfThePath) {
    const std::string path("/a\0/b.\0c", 8);
    EXPECT_EQ(RESULT(path, extractFilename()), std::string("b.\0c", 4));
    EXPECT_EQ(RESULT(path, extractExtension()), std::string(".\0c", 3));
    EXPECT_EQ(RESULT(path, extractFirstDirectory()), std::string("a\0", 2));
}

// Exceptions

TEST(OCFilePathTest, EachFailureHasItsClass) {
    EXPECT_EXCEPTION(throw OXFilePath_ChangeExtensionError(), OXFilePath_ChangeExtensionError,
                     "Error changing extension of file path");
    EXPECT_EXCEPTION(throw OXFilePath_ChangeFilenameError(), OXFilePath_ChangeFilenameError,
                     "Error changing filename of file path");
    EXPECT_EXCEPTION(throw OXFilePath_ExtractDriveError(), OXFilePath_ExtractDriveError,
                     "Error extracting drive from file path");
    EXPECT_EXCEPTION(throw OXFilePath_ExtractExtensionError(), OXFilePath_ExtractExtensionError,
                     "Error extracting extension from file path");
    EXPECT_EXCEPTION(throw OXFilePath_ExtractFilenameError(), OXFilePath_ExtractFilenameError,
                     "Error extracting filename from file path");
    EXPECT_EXCEPTION(throw OXFilePath_GetFileSizeError(), OXFilePath_GetFileSizeError,
                     "Error getting file size of file path");
    EXPECT_EXCEPTION(throw OXFilePath_GetFileTimeError(), OXFilePath_GetFileTimeError,
                     "Error getting file time of file path");
    EXPECT_EXCEPTION(throw OXFilePath_RemoveDriveError(), OXFilePath_RemoveDriveError,
                     "Error removing drive from file path");
    EXPECT_EXCEPTION(throw OXFilePath_RemoveExtensionError(), OXFilePath_RemoveExtensionError,
                     "Error removing extension from file path");
    EXPECT_EXCEPTION(throw OXFilePath_RemoveFilenameError(), OXFilePath_RemoveFilenameError,
                     "Error removing filename from file path");
    EXPECT_EXCEPTION(throw OXFilePath_SetFileTimeError(), OXFilePath_SetFileTimeError,
                     "Error setting file time of file path");
}

TEST(OCFilePathTest, FailuresFormOneFamilyWithoutDetails) {
    static_assert(std::is_base_of_v<OXAutoException, OXFilePath>);
    static_assert(!std::is_default_constructible_v<OXFilePath>);
    static_assert(sizeof(OXFilePath_SetFileTimeError) == sizeof(OXAutoException));
    try {
        OCFilePath().extractDrive();
        ADD_FAILURE();
    } catch (const OXFilePath& failure) {
        EXPECT_EQ(typeid(failure), typeid(OXFilePath_ExtractDriveError));
        EXPECT_EQ(failure.getDetails().getCount(), 0U);
    }
}

TEST(OCFilePathTest, ThrowsWithItsMessage) {
    OCFilePath path("dir/");
    EXPECT_EXCEPTION(path.extractDrive(), OXFilePath_ExtractDriveError,
                     "Error extracting drive from file path");
    EXPECT_EXCEPTION(path.extractFilename(), OXFilePath_ExtractFilenameError,
                     "Error extracting filename from file path");
    EXPECT_EXCEPTION(path.extractExtension(), OXFilePath_ExtractExtensionError,
                     "Error extracting extension from file path");
    EXPECT_EXCEPTION(path.changeExtension("x"), OXFilePath_ChangeExtensionError,
                     "Error changing extension of file path");
    EXPECT_EQ(standard(path), "dir/");
}

// All short paths, and random ones, against a plain model

struct Operation {
    const char* name;
    bool throws; // the public form, which throws where the model says false
    std::function<bool(OCFilePath&)> library;
    std::function<bool(FilePathModel&)> model;
};

#define BOTH(operation)                                                                            \
    {                                                                                              \
#operation, false,                                                                         \
            [](OCFilePath & p) { return p.operation; },                                            \
                                                     [](FilePathModel & m) { return m.operation; } \
    }
#define BOTH_THROWING(operation)                                                                     \
    {                                                                                                \
#operation, true, [](OCFilePath& p) { p.operation; return true; },                                 \
        [](FilePathModel& m) { return m.operation; } \
    }
#define BOTH_SLASHES(operation)                                                                      \
    {                                                                                                \
#operation, false, [](OCFilePath& p) { p.operation; return true; },                                \
        [](FilePathModel& m) { return m.operation; } \
    }

constexpr OEFilePathSystem automatic = FilePathSystemAutomatic;
constexpr OEFilePathSystem windows = FilePathSystemWindows;

const Operation operations[] = {
    BOTH(isUniversal()),
    BOTH(isRelative()),
    BOTH(hasDrive()),
    BOTH(hasDriveClassic()),
    BOTH(hasDriveUniversal()),
    BOTH(hasFilename()),
    BOTH(hasFilenameClassic()),
    BOTH(hasFilenameUniversal()),
    BOTH(hasExtension()),
    BOTH(hasExtensionClassic()),
    BOTH(hasExtensionUniversal()),
    BOTH(validateSlashes(automatic)),
    BOTH(validateSlashes(windows)),
    BOTH(extractDriveClassic()),
    BOTH(extractDriveUniversal()),
    BOTH(removeDriveClassic()),
    BOTH(removeDriveUniversal()),
    BOTH(extractFilenameClassic()),
    BOTH(extractFilenameUniversal()),
    BOTH(removeFilenameClassic()),
    BOTH(removeFilenameUniversal()),
    BOTH(changeFilenameClassic("n")),
    BOTH(changeFilenameUniversal("n")),
    BOTH(changeFilenameUniversal("/n")),
    BOTH(changeFilenameUniversal("")),
    BOTH(extractExtensionClassic()),
    BOTH(extractExtensionUniversal()),
    BOTH(removeExtensionClassic()),
    BOTH(removeExtensionUniversal()),
    BOTH(changeExtensionClassic("x")),
    BOTH(changeExtensionUniversal("x")),
    BOTH(changeExtensionUniversal(".")),
    BOTH_THROWING(extractDrive()),
    BOTH_THROWING(removeDrive()),
    BOTH_THROWING(extractFilename()),
    BOTH_THROWING(removeFilename()),
    BOTH_THROWING(changeFilename("name")),
    BOTH_THROWING(extractExtension()),
    BOTH_THROWING(removeExtension()),
    BOTH_THROWING(changeExtension("")),
    BOTH_THROWING(changeExtension(".ext")),
    BOTH_THROWING(extractFirstDirectory()),
    BOTH_THROWING(removeFirstDirectory()),
    BOTH_THROWING(removeLastDirectory()),
    BOTH_SLASHES(convertSlashes(automatic)),
    BOTH_SLASHES(convertSlashes(windows)),
    BOTH_SLASHES(addLeadingSlash(automatic)),
    BOTH_SLASHES(addTrailingSlash(automatic)),
    BOTH_SLASHES(addTrailingSlash(windows)),
    BOTH_SLASHES(removeLeadingSlash()),
    BOTH_SLASHES(removeTrailingSlash()),
    BOTH_SLASHES(addLeadingPeriod()),
};

// Whether the library and the model do the same to `text`; if not, what they do.
bool agree(const Operation& operation, const std::string& text) {
    OCFilePath path(OCAnsiString(text.data(), text.size()));
    FilePathModel model{text};
    const bool expected = operation.model(model);
    bool done = false;
    if (operation.throws) {
        // Asking first is quicker than catching a hundred thousand exceptions.
        if (!expected) {
            EXPECT_THROW(operation.library(path), OXFilePath) << operation.name << ' ' << text;
        } else {
            done = operation.library(path);
        }
    } else {
        done = operation.library(path);
    }
    if (done == expected && standard(path) == model.path)
        return true;
    ADD_FAILURE() << operation.name << " of [" << text << "]: expected " << expected << " ["
                  << model.path << "], got " << done << " [" << standard(path) << "]";
    return false;
}

TEST(OCFilePathTest, AllShortPathsAgreeWithAPlainModel) {
    const char alphabet[] = {'/', '\\', ':', '.', 'a'};
    int failures = 0;
    for (unsigned length = 0; length <= 6; ++length) {
        unsigned long count = 1;
        for (unsigned i = 0; i < length; ++i)
            count *= sizeof alphabet;
        for (unsigned long number = 0; number < count; ++number) {
            std::string text;
            unsigned long rest = number;
            for (unsigned i = 0; i < length; ++i, rest /= sizeof alphabet)
                text += alphabet[rest % sizeof alphabet];
            for (const Operation& operation : operations)
                failures += !agree(operation, text);
            ASSERT_LT(failures, 10);
        }
    }
}

TEST(OCFilePathTest, RandomPathsAgreeWithAPlainModel) {
    const unsigned seed = 71;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    int failures = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        if (random() % 2 == 0)
            text = "//";
        for (std::size_t length = random() % (i % 10 == 0 ? 300 : 24); length > 0; --length)
            text += "/\\:.aB \xff"[random() % 8];
        for (const Operation& operation : operations)
            failures += !agree(operation, text);
        ASSERT_LT(failures, 10);
    }
}

// Memory and size

TEST(OCFilePathTest, ARefusedAllocationLeavesThePath) {
    const std::string longName(150, 'n'), directory = "/" + std::string(150, 'd');
    const std::string texts[] = {
        "a/b.c",
        directory + directory + "/" + longName + ".ext",
        "c:" + directory + directory + "/" + longName + ".ext",
        "//" + longName + directory + directory + "/" + longName + ".ext",
        "//" + longName + directory,
        longName,
        std::string(127, 'n'),
        "/" + std::string(126, 'n'),
        std::string(126, 'n') + "/",
        "\\" + std::string(190, 'n') + "\\",
    };
    const OCAnsiString name(std::string(140, 'm').c_str());
    const std::function<void(OCFilePath&)> all[] = {
        [](OCFilePath& p) { p.addLeadingSlash(FilePathSystemAutomatic); },
        [](OCFilePath& p) { p.addTrailingSlash(FilePathSystemAutomatic); },
        [](OCFilePath& p) { p.removeLeadingSlash(); },
        [](OCFilePath& p) { p.removeTrailingSlash(); },
        [](OCFilePath& p) { p.addLeadingPeriod(); },
        [](OCFilePath& p) { p.extractDrive(); },
        [](OCFilePath& p) { p.removeDrive(); },
        [](OCFilePath& p) { p.extractFilename(); },
        [](OCFilePath& p) { p.removeFilename(); },
        [&](OCFilePath& p) { p.changeFilename(name); },
        [&](OCFilePath& p) { p.changeFilename("n"); },
        [](OCFilePath& p) { p.changeFilename(p); },
        [](OCFilePath& p) { p.extractExtension(); },
        [](OCFilePath& p) { p.removeExtension(); },
        [&](OCFilePath& p) { p.changeExtension(name); },
        [&](OCFilePath& p) { p.changeExtension("x"); },
        [](OCFilePath& p) { p.extractFirstDirectory(); },
        [](OCFilePath& p) { p.removeFirstDirectory(); },
        [](OCFilePath& p) { p.removeLastDirectory(); },
    };
    unsigned long refusals = 0;
    for (const std::string& text : texts) {
        const OCFilePath original = pathOf(text);
        for (const auto& operation : all) {
            // What the operation does when nothing is refused.
            OCFilePath expected(original);
            bool refused = false;
            try {
                operation(expected);
            } catch (const OXFilePath&) {
                refused = true;
            }
            if (refused)
                continue;
            const long left = fault::blocksLeftBy([&] {
                refusals +=
                    // A copy each time. NOLINTNEXTLINE(performance-no-automatic-move)
                    fault::failEachRequestOn([&] { return original; }, operation,
                                             [&](const OCFilePath& path, bool failed) {
                                                 EXPECT_TRUE(path == (failed ? original : expected))
                                                     << text;
                                             });
            });
            EXPECT_EQ(left, 0) << text;
        }
    }
    EXPECT_GT(refusals, 10U); // those that make a path longer
}

TEST(OCFilePathTest, CuttingShortPathsTakesNoMemory) {
    const OCFilePath path("C:/usr/share/doc/readme.txt");
    const unsigned long before = fault::heapRecord().requests;
    OCFilePath(path).extractDrive();
    OCFilePath(path).removeDrive();
    OCFilePath(path).extractFilename();
    OCFilePath(path).removeFilename();
    OCFilePath(path).changeFilename("other.txt");
    OCFilePath(path).extractExtension();
    OCFilePath(path).removeExtension();
    OCFilePath(path).changeExtension("md");
    OCFilePath(path).extractFirstDirectory();
    OCFilePath(path).removeFirstDirectory();
    OCFilePath(path).removeLastDirectory();
    EXPECT_EQ(fault::heapRecord().requests, before);
}

std::vector<std::string> longTexts(std::size_t size) {
    std::string directories;
    while (directories.size() < size)
        directories += "/dir.d";
    return {std::string(size, 'a'),
            std::string(size, '/'),
            std::string(size, '.'),
            std::string(size, ':'),
            directories,
            "//s/h" + directories,
            "//" + std::string(size, 'a'),
            "/" + std::string(size, 'a') + ".b"};
}

TEST(OCFilePathTest, LongPathsAgreeWithAPlainModel) {
    for (const std::string& text : longTexts(20000))
        for (const Operation& operation : operations)
            agree(operation, text);
}

TEST(OCFilePathTest, PathsOfTenMillionCharactersTakeLinearTime) {
    const std::size_t size = 10000000;
    const auto start = std::chrono::steady_clock::now();
    const std::vector<std::string> texts = longTexts(size);
    for (std::size_t i : {0U, 4U, 5U, 7U}) {
        const std::string& text = texts[i];
        const OCFilePath original = pathOf(text);
        for (const Operation& operation : operations) {
            OCFilePath path(original);
            try {
                operation.library(path);
            } catch (const OXFilePath&) {
                EXPECT_EQ(path.getLength(), text.size()) << operation.name;
            }
            EXPECT_LE(path.getLength(), text.size() + 5) << operation.name;
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

// The file system

class OCFilePathFilesTest : public testing::Test {
protected:
    void SetUp() override {
        root = testing::TempDir() + "orvabase-path-XXXXXX";
        ASSERT_NE(mkdtemp(root.data()), nullptr);
    }
    void TearDown() override {
        for (auto name = made.rbegin(); name != made.rend(); ++name)
            EXPECT_EQ(remove(name->c_str()), 0) << *name;
        EXPECT_EQ(rmdir(root.c_str()), 0);
    }

    OCFilePath at(const std::string& name) { return pathOf(root + "/" + name); }
    const char* make(const std::string& name) {
        made.push_back(root + "/" + name);
        return made.back().c_str();
    }
    OCFilePath file(const std::string& name, const std::string& content) {
        FILE* const stream = fopen(make(name), "wb");
        EXPECT_NE(stream, nullptr);
        EXPECT_EQ(fwrite(content.data(), 1, content.size(), stream), content.size());
        fclose(stream);
        return at(name);
    }
    OCFilePath directory(const std::string& name) {
        EXPECT_EQ(mkdir(make(name), 0700), 0);
        return at(name);
    }
    OCFilePath link(const std::string& name, const std::string& target) {
        EXPECT_EQ(symlink(target.c_str(), make(name)), 0);
        return at(name);
    }
    OCFilePath fifo(const std::string& name) {
        EXPECT_EQ(mkfifo(make(name), 0600), 0);
        return at(name);
    }
    OCFilePath socketAt(const std::string& name) {
        const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        snprintf(address.sun_path, sizeof address.sun_path, "%s", make(name));
        EXPECT_EQ(bind(handle, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(handle);
        return at(name);
    }

    std::string root;
    std::vector<std::string> made;
    TimeCallsScope timeCalls;
    StatCallsScope calls;
};

TEST_F(OCFilePathFilesTest, KnowsEachTypeOfFile) {
    struct {
        OCFilePath path;
        OEFileType following, itself;
    } const cases[] = {
        {file("file", "x"), FileTypeRegular, FileTypeRegular},
        {directory("directory"), FileTypeDirectory, FileTypeDirectory},
        {fifo("fifo"), FileTypeFifo, FileTypeFifo},
        {socketAt("socket"), FileTypeSocket, FileTypeSocket},
        {link("tofile", "file"), FileTypeRegular, FileTypeSymbolicLink},
        {link("todirectory", "directory"), FileTypeDirectory, FileTypeSymbolicLink},
        {link("tofifo", "fifo"), FileTypeFifo, FileTypeSymbolicLink},
        {link("dangling", "nothing"), FileTypeUnknown, FileTypeSymbolicLink},
        {link("circle", "circle"), FileTypeUnknown, FileTypeSymbolicLink},
        {"/dev/null", FileTypeCharacterDevice, FileTypeCharacterDevice},
        {at("nothing"), FileTypeUnknown, FileTypeUnknown},
        {at("file/below"), FileTypeUnknown, FileTypeUnknown},
        {"", FileTypeUnknown, FileTypeUnknown},
        {"/", FileTypeDirectory, FileTypeDirectory},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(one.path.getFileType(true), one.following) << one.path;
        EXPECT_EQ(one.path.getFileType(false), one.itself) << one.path;
        EXPECT_EQ(one.path.existsFile(true), one.following == FileTypeRegular) << one.path;
        EXPECT_EQ(one.path.existsFile(false), one.itself == FileTypeRegular) << one.path;
        const bool bare = one.path == "/";
        EXPECT_EQ(one.path.existsDirectory(true), !bare && one.following == FileTypeDirectory)
            << one.path;
        EXPECT_EQ(one.path.existsDirectory(false), !bare && one.itself == FileTypeDirectory)
            << one.path;
    }
}

TEST_F(OCFilePathFilesTest, ClassifiesByTheTypeBitsOfTheMode) {
    struct {
        mode_t mode;
        OEFileType type;
    } const cases[] = {
        {S_IFBLK | 0777, FileTypeBlockDevice},
        {S_IFCHR, FileTypeCharacterDevice},
        {S_IFDIR | 01755, FileTypeDirectory},
        {S_IFLNK | 0777, FileTypeSymbolicLink},
        {S_IFIFO, FileTypeFifo},
        {S_IFREG | 04755, FileTypeRegular},
        {S_IFSOCK, FileTypeSocket},
        {0, FileTypeUnknown},
        {0777, FileTypeUnknown},
        {0170000, FileTypeUnknown},
        {0030000, FileTypeUnknown},
    };
    calls->answers = true;
    for (const auto& one : cases) {
        calls->answer.st_mode = one.mode;
        EXPECT_EQ(OCFilePath("x").getFileType(true), one.type) << std::oct << one.mode;
        EXPECT_EQ(OCFilePath("x").getFileType(false), one.type) << std::oct << one.mode;
    }
}

TEST_F(OCFilePathFilesTest, AsksOnceAndWithTheTextAsItStands) {
    OCFilePath("a\\b/").getFileType(true);
    EXPECT_EQ(calls->statCalls, 1U);
    EXPECT_EQ(calls->lstatCalls, 0U);
    EXPECT_STREQ(calls->lastPath, "a\\b/");
    OCFilePath("c:d").getFileType(false);
    EXPECT_EQ(calls->statCalls, 1U);
    EXPECT_EQ(calls->lstatCalls, 1U);
    EXPECT_STREQ(calls->lastPath, "c:d");
    OCFilePath("e").existsFile(false);
    EXPECT_EQ(calls->lstatCalls, 2U);
    OCFilePath("f").existsFile(true);
    EXPECT_EQ(calls->statCalls, 2U);
    OCFilePath().existsFile(true);
    OCFilePath().existsDirectory(true);
    OCFilePath("/").existsDirectory(true);
    EXPECT_EQ(calls->statCalls, 2U);
    OCFilePath().getFileType(true);
    EXPECT_EQ(calls->statCalls, 3U);
    EXPECT_STREQ(calls->lastPath, "");
}

TEST_F(OCFilePathFilesTest, LooksForADirectoryWithoutOneTrailingSlash) {
    directory("d");
    file("f", "x");
    link("l", "d");
    EXPECT_TRUE(at("d/").existsDirectory(true));
    EXPECT_TRUE(at("d").existsDirectory(true));
    EXPECT_TRUE(at("d//").existsDirectory(true));
    EXPECT_FALSE(at("f/").existsDirectory(true));
    EXPECT_TRUE(at("l/").existsDirectory(true));
    EXPECT_FALSE(at("l/").existsDirectory(false)); // the link itself
    EXPECT_TRUE(at("l//").existsDirectory(false)); // the system follows it for the other slash
    EXPECT_TRUE(OCFilePath("/tmp/").existsDirectory(true));
    OCFilePath("a\\").existsDirectory(true);
    EXPECT_STREQ(calls->lastPath, "a");
    OCFilePath("b//").existsDirectory(false);
    EXPECT_STREQ(calls->lastPath, "b/");
    EXPECT_FALSE(OCFilePath("/").existsDirectory(true));
    EXPECT_FALSE(OCFilePath("\\").existsDirectory(true));
    EXPECT_TRUE(OCFilePath("//").existsDirectory(true));
    EXPECT_TRUE(OCFilePath("/.").existsDirectory(true));
}

TEST_F(OCFilePathFilesTest, AFailingSystemIsAnUnknownType) {
    const OCFilePath path = file("f", "x");
    calls->fails = true;
    EXPECT_EQ(path.getFileType(true), FileTypeUnknown);
    EXPECT_EQ(path.getFileType(false), FileTypeUnknown);
    EXPECT_FALSE(path.existsFile(true));
    EXPECT_FALSE(path.existsFile(false));
    EXPECT_FALSE(path.existsDirectory(true));
    EXPECT_FALSE(path.existsDirectory(false));
}

TEST_F(OCFilePathFilesTest, OverlongPathsDoNotExist) {
    const std::size_t most = PATH_MAX;
    for (std::size_t length : {most - 2, most - 1, most, most + 1, most * 20}) {
        const OCFilePath path = pathOf("/dev" + std::string(length - 4, '/'));
        // The system takes one character less than this, and a directory one slash more.
        EXPECT_EQ(path.existsDirectory(true), length <= most) << length;
        EXPECT_EQ(path.getFileType(true), length < most ? FileTypeDirectory : FileTypeUnknown);
        EXPECT_FALSE(path.existsFile(true));
    }
    EXPECT_TRUE(pathOf(std::string("/dev\0/", 6)).existsDirectory(true));
    EXPECT_TRUE(pathOf(std::string("/dev\0", 5) + std::string(9000, '/')).existsDirectory(true));
}

TEST_F(OCFilePathFilesTest, QueriesTakeNoMemory) {
    const OCFilePath path = pathOf("/" + std::string(3000, '/') + "dev/");
    path.existsDirectory(true);
    const unsigned long before = fault::heapRecord().requests;
    EXPECT_TRUE(path.existsDirectory(true));
    EXPECT_FALSE(path.existsFile(true));
    EXPECT_EQ(path.getFileType(false), FileTypeDirectory);
    EXPECT_TRUE(path.isUniversal());
    EXPECT_TRUE(path.hasDrive());
    EXPECT_FALSE(path.hasFilename());
    EXPECT_FALSE(path.hasExtension());
    EXPECT_FALSE(path.isRelative());
    EXPECT_TRUE(path.validateSlashes(FilePathSystemUnix));
    EXPECT_EQ(path.makeSlash(FilePathSystemAutomatic), '/');
    EXPECT_EQ(fault::heapRecord().requests, before);
}

TEST_F(OCFilePathFilesTest, TellsTheSizeInBytes) {
    EXPECT_EQ(file("empty", "").getFileSize(), 0);
    EXPECT_EQ(file("three", "abc").getFileSize(), 3);
    EXPECT_EQ(link("link", "three").getFileSize(), 3);
    ASSERT_EQ(truncate(made[0].c_str(), 5000000000), 0);
    EXPECT_EQ(at("empty").getFileSize(), 5000000000);
    static_assert(std::is_same_v<decltype(OCFilePath().getFileSize()), long>);
    EXPECT_EQ(calls->lstatCalls, 0U);
    calls->answers = true;
    calls->answer.st_size = -5;
    EXPECT_EQ(at("empty").getFileSize(), -5);
}

TEST_F(OCFilePathFilesTest, AFailingSizeThrows) {
    link("dangling", "nothing");
    for (const OCFilePath& path : {at("nothing"), at("dangling"), OCFilePath()})
        EXPECT_EXCEPTION(path.getFileSize(), OXFilePath_GetFileSizeError,
                         "Error getting file size of file path");
    calls->fails = true;
    EXPECT_EXCEPTION(OCFilePath("/").getFileSize(), OXFilePath_GetFileSizeError,
                     "Error getting file size of file path");
}

OCDateTime dateTime(int year, int month, int day, int hour, int minute, int second) {
    struct tm structure = {};
    structure.tm_year = year - 1900;
    structure.tm_mon = month - 1;
    structure.tm_mday = day;
    structure.tm_hour = hour;
    structure.tm_min = minute;
    structure.tm_sec = second;
    return OCDateTime(structure);
}

TEST_F(OCFilePathFilesTest, TellsTheTimesInSystemTime) {
    TimeZoneScope zone(zones::fixedWest);
    const OCFilePath path = file("f", "x");
    link("l", "f");
    const timespec times[] = {{1451703845, 999999999}, {784111777, 500000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.getString(), times, 0), 0);
    EXPECT_TRUE(path.getTimeAccessed() == dateTime(2016, 1, 2, 3, 4, 5));
    EXPECT_TRUE(path.getTimeModified() == dateTime(1994, 11, 6, 8, 49, 37));
    EXPECT_TRUE(at("l").getTimeAccessed() == dateTime(2016, 1, 2, 3, 4, 5));
    EXPECT_TRUE(at("l").getTimeModified() == dateTime(1994, 11, 6, 8, 49, 37));
    calls->answers = true;
    calls->answer.st_atim.tv_sec = 0;
    calls->answer.st_mtim.tv_sec = 86399;
    calls->answer.st_ctim.tv_sec = -1;
    EXPECT_TRUE(path.getTimeAccessed() == dateTime(1970, 1, 1, 0, 0, 0));
    EXPECT_TRUE(path.getTimeModified() == dateTime(1970, 1, 1, 23, 59, 59));
    EXPECT_TRUE(path.getTimeCreated() == dateTime(1969, 12, 31, 23, 59, 59));
    EXPECT_EQ(calls->lstatCalls, 0U);
}

TEST_F(OCFilePathFilesTest, TheTimeOfCreationIsThatOfTheLastStatusChange) {
    const OCFilePath path = file("f", "x");
    const timespec times[] = {{1, 0}, {2, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.getString(), times, 0), 0);
    struct stat status;
    ASSERT_EQ(stat(path.getString(), &status), 0);
    struct tm structure;
    gmtime_r(&status.st_ctim.tv_sec, &structure);
    EXPECT_TRUE(path.getTimeCreated() == OCDateTime(structure));
    EXPECT_TRUE(path.getTimeModified() == dateTime(1970, 1, 1, 0, 0, 2));
    EXPECT_GE(path.getTimeCreated().year, 2016);
}

TEST_F(OCFilePathFilesTest, EachFailingStepOfATimeThrows) {
    const OCFilePath path = file("f", "x");
    const char message[] = "Error getting file time of file path";
    EXPECT_EXCEPTION(at("g").getTimeAccessed(), OXFilePath_GetFileTimeError, message);
    EXPECT_EXCEPTION(at("g").getTimeModified(), OXFilePath_GetFileTimeError, message);
    EXPECT_EXCEPTION(at("g").getTimeCreated(), OXFilePath_GetFileTimeError, message);
    timeCalls->gmtime_r.fails = true;
    EXPECT_EXCEPTION(path.getTimeAccessed(), OXFilePath_GetFileTimeError, message);
    EXPECT_EXCEPTION(path.getTimeModified(), OXFilePath_GetFileTimeError, message);
    EXPECT_EXCEPTION(path.getTimeCreated(), OXFilePath_GetFileTimeError, message);
    EXPECT_EQ(timeCalls->gmtime_r.calls, 3U);
    timeCalls->gmtime_r.fails = false;
    calls->answers = true;
    calls->answer.st_mtim.tv_sec = LONG_MAX; // beyond the years that the C library knows
    EXPECT_EXCEPTION(path.getTimeModified(), OXFilePath_GetFileTimeError, message);
    calls->fails = true;
    EXPECT_EXCEPTION(path.getTimeAccessed(), OXFilePath_GetFileTimeError, message);
}

} // namespace
