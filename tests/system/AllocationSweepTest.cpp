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

TEST(AllocationSweep, FilePath) {
    const OCFilePath whole(("C:\\" + run + "\\" + run + "." + run).c_str());
    const sweep::Operations path([&] { return std::make_unique<OCFilePath>(whole); },
                                 [](const OCFilePath& p) { return sweep::seen(p); });
    path("construction", [&](auto&) { OCFilePath(whole.getString()); });
    path("copy", [&](auto&) { OCFilePath copy(whole); });
    path("new", [](auto&) { delete new OCFilePath; });
    path("extractFilename", [](OCFilePath& p) { p.extractFilename(); });
    path("removeFilename", [](OCFilePath& p) { p.removeFilename(); });
    path("changeFilename",
         [](OCFilePath& p) { p.changeFilename(OCAnsiString(longText + longText)); });
    path("extractExtension", [](OCFilePath& p) { p.extractExtension(); });
    path("removeExtension", [](OCFilePath& p) { p.removeExtension(); });
    path("changeExtension", [](OCFilePath& p) { p.changeExtension(longText + longText); });
    path("extractFirstDirectory", [](OCFilePath& p) { p.extractFirstDirectory(); });
    path("removeFirstDirectory", [](OCFilePath& p) { p.removeFirstDirectory(); });
    path("removeLastDirectory", [](OCFilePath& p) { p.removeLastDirectory(); });
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
    process("new", [](auto&) { delete new OCChildProcess; });
}

TEST(AllocationSweep, DynamicLibrary) {
    // The loader's own requests are refused too, and what it keeps is its own.
    sweep::results()("new", [](auto&) { delete new OCDynamicLibrary; });
}

} // namespace
