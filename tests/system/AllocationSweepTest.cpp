#include "support/AllocationSweep.h"

#include "OCApplicationArguments.h"
#include "OCChildProcess.h"
#include "OCDynamicLibrary.h"
#include "OCEnvironment.h"
#include "OCFileFinder.h"
#include "OCFileManager.h"
#include "OCFilePath.h"
#include "OCSystemAccount.h"
#include "OCSystemMemory.h"
#include "OCTemporaryDirectory.h"
#include "OCTemporaryFile.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

const std::string run(200, 'n');
const OCAnsiString longText(run.c_str());

auto paths(const std::string& text) {
    return sweep::Operations([text] { return std::make_unique<OCFilePath>(text.c_str()); },
                             [](const OCFilePath& p) { return sweep::seen(p); });
}

TEST(AllocationSweep, FilePath) {
    const OCFilePath whole(("C:\\" + run + "\\" + run + "." + run).c_str());
    const auto make = sweep::results();
    make("construction", [&](auto&) { OCFilePath(whole.getString()); });
    make("of a string", [](auto&) { OCFilePath made(longText); });
    make("copy", [&](auto&) { OCFilePath copy(whole); });
    make("new", [](auto&) { delete new OCFilePath; });
    const auto path = paths(whole.getString());
    path("=", [](OCFilePath& p) { p = OCFilePath(longText); });
    const auto filled = paths(std::string(255, 'n')); // which fill a block
    for (const auto system : {FilePathSystemAutomatic, FilePathSystemUnix, FilePathSystemWindows}) {
        filled("addLeadingSlash", [=](OCFilePath& p) { p.addLeadingSlash(system); });
        filled("addTrailingSlash", [=](OCFilePath& p) { p.addTrailingSlash(system); });
    }
    filled("addLeadingPeriod", [](OCFilePath& p) { p.addLeadingPeriod(); });
    const OCAnsiString longer(longText + longText);
    path("changeFilename", [&](OCFilePath& p) { p.changeFilename(longer); });
    path("changeFilenameClassic", [&](OCFilePath& p) { p.changeFilenameClassic(longer); });
    path("changeExtension", [&](OCFilePath& p) { p.changeExtension(longer); });
    path("changeExtensionClassic", [&](OCFilePath& p) { p.changeExtensionClassic(longer); });
    const auto network = paths("//" + run + "/" + run + "/" + run + "." + run);
    network("changeFilenameUniversal", [&](OCFilePath& p) { p.changeFilenameUniversal(longer); });
    network("changeExtensionUniversal", [&](OCFilePath& p) { p.changeExtensionUniversal(longer); });
}

TEST(AllocationSweep, FilePathsThatGetShorter) {
    // There may be no smaller block to be had, but there is one already.
    const auto slashes = paths("/" + std::string(254, 'n') + "/");
    slashes.managing("removeLeadingSlash", [](OCFilePath& p) { p.removeLeadingSlash(); });
    slashes.managing("removeTrailingSlash", [](OCFilePath& p) { p.removeTrailingSlash(); });
    const std::string rest = "\\" + run + "\\" + run + "." + run;
    const auto classic = paths("C:" + std::string(400, 'n') + rest);
    const auto drive = paths(std::string(150, 'C') + ":" + rest);
    drive.managing("extractDrive", [](OCFilePath& p) { p.extractDrive(); });
    drive.managing("extractDriveClassic", [](OCFilePath& p) { p.extractDriveClassic(); });
    drive.managing("removeDrive", [](OCFilePath& p) { p.removeDrive(); });
    drive.managing("removeDriveClassic", [](OCFilePath& p) { p.removeDriveClassic(); });
    drive.managing("extractFirstDirectory", [](OCFilePath& p) { p.extractFirstDirectory(); });
    drive.managing("removeFirstDirectory", [](OCFilePath& p) { p.removeFirstDirectory(); });
    classic.managing("removeLastDirectory", [](OCFilePath& p) { p.removeLastDirectory(); });
    classic.managing("extractFilename", [](OCFilePath& p) { p.extractFilename(); });
    classic.managing("extractFilenameClassic", [](OCFilePath& p) { p.extractFilenameClassic(); });
    classic.managing("removeFilename", [](OCFilePath& p) { p.removeFilename(); });
    classic.managing("removeFilenameClassic", [](OCFilePath& p) { p.removeFilenameClassic(); });
    classic.managing("extractExtension", [](OCFilePath& p) { p.extractExtension(); });
    classic.managing("extractExtensionClassic", [](OCFilePath& p) { p.extractExtensionClassic(); });
    classic.managing("removeExtension", [](OCFilePath& p) { p.removeExtension(); });
    classic.managing("removeExtensionClassic", [](OCFilePath& p) { p.removeExtensionClassic(); });
    const auto network = paths("//" + run + "/" + run + "/" + run + "." + run);
    network.managing("extractDriveUniversal", [](OCFilePath& p) { p.extractDriveUniversal(); });
    network.managing("removeDriveUniversal", [](OCFilePath& p) { p.removeDriveUniversal(); });
    network.managing("extractFilenameUniversal",
                     [](OCFilePath& p) { p.extractFilenameUniversal(); });
    network.managing("removeFilenameUniversal", [](OCFilePath& p) { p.removeFilenameUniversal(); });
    network.managing("extractExtensionUniversal",
                     [](OCFilePath& p) { p.extractExtensionUniversal(); });
    network.managing("removeExtensionUniversal",
                     [](OCFilePath& p) { p.removeExtensionUniversal(); });
}

TEST(AllocationSweep, FileSystem) {
    const ScratchDirectory directory;
    const std::string name = directory.write(run, "content");
    const OCFilePath path(name.c_str());
    const OCFilePath parent(directory.path.c_str());
    const OCFilePath nowhere((directory.path + "/no/" + run).c_str());
    const long descriptors = openDescriptors();
    const sweep::Operations files([] { return std::make_unique<sweep::Nothing>(); },
                                  [&](const auto&) {
                                      return directory.read(run) + '/' +
                                             std::to_string(openDescriptors() - descriptors);
                                  });
    files("finder of nothing", [&](auto&) {
        sweep::refused<OXFileFinder_OpenDirectory>([&] { OCFileFinder finder(nowhere); });
    });
    // A directory that the C library has no memory to open is one that does not open.
    files("getFilename", [&](auto&) {
        try {
            OCFileFinder finder(parent);
            for (bool found = finder.findFirst(); found; found = finder.findNext())
                finder.getFilename();
        } catch (const OXFileFinder_OpenDirectory&) {
        }
    });
    files("new manager", [](auto&) { delete new OCFileManager; });
    files("createDirectory on a file", [&](auto&) {
        sweep::refused<OXFileManager_CreateDirectoryError>(
            [&] { OCFileManager().createDirectory(OCFilePath(path / longText)); });
    });
    files("deleteFile of none", [&](auto&) {
        sweep::refused<OXFileManager_DeleteFileError>([&] { OCFileManager().deleteFile(nowhere); });
    });
    files("deleteDirectory of a file", [&](auto&) {
        sweep::refused<OXFileManager_DeleteDirectoryError>(
            [&] { OCFileManager().deleteDirectory(path, false); });
    });
    files("new temporary file", [](auto&) { delete new OCTemporaryFile; });
    files("new temporary file stream", [](auto&) { delete new OCTemporaryFileStream; });
    files("new temporary directory", [](auto&) { delete new OCTemporaryDirectory; });
}

TEST(AllocationSweep, Environment) {
    const auto make = sweep::results();
    make("variable", [](auto&) { OCEnvironmentVariable made(longText); });
    make("variable that is missing", [](auto&) {
        const OCEnvironmentVariable missing("ORVABASE_MISSING");
        sweep::refused<OXEnvironmentVariable_GetValue>([&] { missing.getValue(); });
    });
    make("another value",
         [](auto&) { OCEnvironmentVariable("ORVABASE_MISSING").getValue(longText); });
    OCEnvironmentBlock block;
    block.getVariables().setValue("A", longText);
    block.getVariables().setValue("B", longText);
    make("array", [&](auto&) { OCEnvironmentBufferArray made(block); });
    make("array of a list", [&](auto&) { OCEnvironmentBufferArray made(block.getVariables()); });
    make("serial", [&](auto&) { OCEnvironmentBufferSerial made(block); });
    make("new block", [](auto&) { delete new OCEnvironmentBlock; });
}

TEST(AllocationSweep, ApplicationArguments) {
    const std::string text = "--" + run + "=" + run + " -v " + run;
    const std::string option = "--" + run + "=" + run;
    const sweep::Operations list(
        [] {
            auto made = std::make_unique<OCApplicationArgumentList>();
            for (int i = 0; i < 64; ++i)
                made->addArgument("a");
            return made;
        },
        [](const OCApplicationArgumentList& l) {
            std::string result;
            for (unsigned long i = 0; i < l.getCount(); ++i)
                result += std::to_string(l.getArgument(i).getType()) +
                          sweep::seen(l.getArgument(i).getName()) +
                          sweep::seen(l.getArgument(i).getValue());
            return result;
        });
    const OCAnsiString longOption(option.c_str());
    list("new", [](auto&) { delete new OCApplicationArgumentList; });
    list("new argument", [](auto&) { delete new OCApplicationArgument; });
    list("assign", [&](auto& l) { l.assign(text.c_str()); });
    list("addArgument", [&](auto& l) { l.addArgument(longOption); });
    list("parseOptionShort", [](auto& l) { l.parseOptionShort("-v=x"); });
    list("parseOptionLong", [&](auto& l) { l.parseOptionLong(longOption); });
    list("parseMiscellaneous", [](auto& l) { l.parseMiscellaneous(longText); });
    list("appendOptionShort", [](auto& l) { l.appendOptionShort("v", longText); });
    list("appendOptionLong", [](auto& l) { l.appendOptionLong(longText, longText); });
    list("appendMiscellaneous", [](auto& l) { l.appendMiscellaneous(longText); });
    std::string program = "program";
    std::string word = option;
    list("assign of words", [&](auto& l) {
        char* words[] = {program.data(), word.data(), nullptr};
        l.assign(2, words);
    });
    list("splitOptionLong", [&](auto& l) {
        OCAnsiString name;
        OCAnsiString value;
        l.splitOptionLong(longOption, name, value);
    });
    list("getArgument behind, of what does not change", [](const OCApplicationArgumentList& l) {
        sweep::refused<OXVector_NoSuchIndex>([&] { l.getArgument(64); });
    });
    list("getArgument behind",
         [](auto& l) { sweep::refused<OXVector_NoSuchIndex>([&] { l.getArgument(64); }); });
    const sweep::Operations argument([] { return std::make_unique<OCApplicationArgument>(); },
                                     [](const OCApplicationArgument& a) {
                                         return sweep::seen(a.getName()) +
                                                sweep::seen(a.getValue());
                                     });
    argument("setName", [](auto& a) { a.setName(longText); });
    argument("setValue", [](auto& a) { a.setValue(longText); });
}

TEST(AllocationSweep, ChildProcess) {
    struct Process {
        OCChildProcess process;
    };
    const OCFilePath path(longText);
    const sweep::Operations process([] { return std::make_unique<Process>(); },
                                    [](const Process& p) {
                                        return sweep::seen(p.process.getExecutionFilename()) +
                                               sweep::seen(p.process.getExecutionDirectory());
                                    });
    process("setExecutionFilename", [&](Process& p) { p.process.setExecutionFilename(path); });
    process("setExecutionDirectory", [&](Process& p) { p.process.setExecutionDirectory(path); });
    process("context", [](Process& p) { OCChildProcessContext context(p.process); });
    process("new", [](auto&) { delete new OCChildProcess; });
}

TEST(AllocationSweep, DynamicLibrary) {
    // The loader's own requests are refused too, and what it keeps is its own.
    sweep::results()("new", [](auto&) { delete new OCDynamicLibrary; });
}

} // namespace
