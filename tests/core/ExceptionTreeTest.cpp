// Every exception class of the library, with the texts that handlers may rely on.

#include "orvabase.h"
#include "support/AllocationSweep.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>

#include <cxxabi.h>

namespace {

/// An error number of the system, and what it says.
constexpr unsigned int missing = ENOENT;

std::set<std::string> checked;

template<class Class>
void noteChecked() {
    int status = 0;
    char* const name = abi::__cxa_demangle(typeid(Class).name(), nullptr, nullptr, &status);
    checked.insert(name);
    std::free(name);
}

/// `Family` is an abstract part of the tree, right below `Base`.
template<class Family, class Base>
void expectFamily() {
    noteChecked<Family>();
    EXPECT_TRUE((std::is_base_of_v<Base, Family>));
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, Base>));
    EXPECT_FALSE(std::is_default_constructible_v<Family>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<Family>);
    EXPECT_EQ(400u, sizeof(Family));
    EXPECT_EQ(4u, slots::slotCount<Family>());
}

/// Whether throwing a `Leaf` reaches a handler of `Base`, with the leaf's texts.
template<class Base, class Leaf>
bool isCaughtAs(const Leaf& leaf) {
    try {
        throw Leaf(leaf);
    } catch (const Base& caught) {
        return caught.getClass() == leaf.getClass() && caught.getMessage() == leaf.getMessage();
    } catch (...) {
        return false;
    }
}

/// `Leaf`, made with `arguments`, has the class name `name` and the full text `message`.
template<class Leaf, class Base, class... Arguments>
void expectLeaf(const char* name, const char* message, Arguments... arguments) {
    SCOPED_TRACE(name);
    noteChecked<Leaf>();
    EXPECT_TRUE((std::is_base_of_v<Base, Leaf>));
    EXPECT_FALSE((std::is_same_v<Base, Leaf>));
    EXPECT_TRUE((std::is_constructible_v<Leaf, Arguments...>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<Leaf>);
    EXPECT_EQ(400u, sizeof(Leaf));
    EXPECT_EQ(4u, slots::slotCount<Leaf>());

    Leaf leaf(arguments...);
    EXPECT_EQ(OCAnsiString(name), leaf.getClass());
    EXPECT_EQ(OCAnsiString(message), leaf.getMessage());
    EXPECT_EQ(sizeof...(Arguments), leaf.getDetails().getCount());
    EXPECT_TRUE((isCaughtAs<Leaf>(leaf)));
    EXPECT_TRUE((isCaughtAs<Base>(leaf)));
    EXPECT_TRUE((isCaughtAs<OXAutoException>(leaf)));
    EXPECT_TRUE((isCaughtAs<OXException>(leaf)));

    Leaf copy(leaf);
    copy.getDetails().addString("more");
    EXPECT_EQ(OCAnsiString(message), leaf.getMessage());
    EXPECT_EQ(leaf.getDetails().getCount() + 1, copy.getDetails().getCount());
    leaf = copy;
    EXPECT_EQ(copy.getMessage(), leaf.getMessage());

    const auto make = sweep::results();
    make("construction", [&](auto&) { delete new Leaf(arguments...); });
    make("copy", [&](auto&) { delete new Leaf(leaf); });
    make("=", [&](auto&) {
        Leaf target(leaf);
        target = copy;
    });
}

void expectAllFamilies() {
    expectFamily<OXBooleanConversion, OXAutoException>();
    expectFamily<OXBooleanConversion_ConvertError, OXBooleanConversion>();
    expectFamily<OXChildProcess, OXAutoException>();
    expectFamily<OXCountdown, OXAutoException>();
    expectFamily<OXDateTime, OXAutoException>();
    expectFamily<OXDateTimeParser, OXDateTime>();
    expectFamily<OXDynamicLibrary, OXAutoException>();
    expectFamily<OXEnvironmentBlock, OXAutoException>();
    expectFamily<OXEnvironmentVariable, OXAutoException>();
    expectFamily<OXEvent, OXAutoException>();
    expectFamily<OXFileFinder, OXAutoException>();
    expectFamily<OXFileManager, OXAutoException>();
    expectFamily<OXFilePath, OXAutoException>();
    expectFamily<OXFileStream, OXHandleStream>();
    expectFamily<OXFileStreamLock, OXFileStream>();
    expectFamily<OXHandleStream, OXStream>();
    expectFamily<OXHtml, OXAutoException>();
    expectFamily<OXHtmlError, OXHtml>();
    expectFamily<OXIntegerConversion, OXAutoException>();
    expectFamily<OXIntegerConversion_ConvertError, OXIntegerConversion>();
    expectFamily<OXMemoryBuffer, OXAutoException>();
    expectFamily<OXMutex, OXAutoException>();
    expectFamily<OXNamedList, OXAutoException>();
    expectFamily<OXQueryString, OXAutoException>();
    expectFamily<OXStack, OXAutoException>();
    expectFamily<OXStopwatch, OXAutoException>();
    expectFamily<OXStream, OXAutoException>();
    expectFamily<OXStreamTransfer, OXStream>();
    expectFamily<OXString, OXAutoException>();
    expectFamily<OXStringFilter, OXAutoException>();
    expectFamily<OXStringList, OXAutoException>();
    expectFamily<OXStringTable, OXAutoException>();
    expectFamily<OXStringTableRow, OXStringTable>();
    expectFamily<OXStringTableRowList, OXStringTable>();
    expectFamily<OXTemporaryDirectory, OXAutoException>();
    expectFamily<OXTemporaryFile, OXAutoException>();
    expectFamily<OXSystem, OXAutoException>();
    expectFamily<OXSystemAbstractAccount, OXSystem>();
    expectFamily<OXSystemDirectories, OXSystem>();
    expectFamily<OXSystemGroupAccount, OXSystemAbstractAccount>();
    expectFamily<OXSystemMemory, OXSystem>();
    expectFamily<OXSystemProcess, OXSystem>();
    expectFamily<OXSystemProperties, OXSystem>();
    expectFamily<OXSystemUserAccount, OXSystemAbstractAccount>();
    expectFamily<OXThread, OXAutoException>();
    expectFamily<OXThreadPool, OXAutoException>();
    expectFamily<OXUniqueIdentifier, OXAutoException>();
    expectFamily<OXVariant, OXAutoException>();
    expectFamily<OXVector, OXAutoException>();
    expectFamily<OXXmlParser, OXAutoException>();
    expectFamily<OXXmlParserSource, OXXmlParser>();
}

void expectAllLeaves() {
    expectLeaf<OXBooleanConversion_ConvertStringError, OXBooleanConversion_ConvertError>(
        "OXBooleanConversion_ConvertStringError", "Error converting string to boolean");
    expectLeaf<OXChildProcess_ExecuteError, OXChildProcess>(
        "OXChildProcess_ExecuteError",
        "Executing the child process failed (No such file or directory)", missing);
    expectLeaf<OXChildProcess_UnexpectedSignal, OXChildProcess>(
        "OXChildProcess_UnexpectedSignal", "Unexpected signal in child process (15)", 15u);
    expectLeaf<OXChildProcess_WaitFailed, OXChildProcess>("OXChildProcess_WaitFailed",
                                                          "Waiting for the child process failed");
    expectLeaf<OXChildProcess_WaitTimeout, OXChildProcess>(
        "OXChildProcess_WaitTimeout", "Waiting for the child process timed out");
    expectLeaf<OXCountdown_AcquireTimeError, OXCountdown>("OXCountdown_AcquireTimeError",
                                                          "Error acquiring the current time");
    expectLeaf<OXDateTimeParser_SyntaxError, OXDateTimeParser>(
        "OXDateTimeParser_SyntaxError", "Syntax error parsing date/time string (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXDateTime_AcquireError, OXDateTime>("OXDateTime_AcquireError",
                                                    "Error acquiring current date/time");
    expectLeaf<OXDateTime_AdjustError, OXDateTime>("OXDateTime_AdjustError",
                                                   "Error adjusting date/time");
    expectLeaf<OXDateTime_ConvertError, OXDateTime>("OXDateTime_ConvertExport",
                                                    "Error converting date/time");
    expectLeaf<OXDateTime_RepresentError, OXDateTime>("OXDateTime_RepresentExport",
                                                      "Error representing date/time");
    expectLeaf<OXDynamicLibrary_LoadError, OXDynamicLibrary>(
        "OXDynamicLibrary_LoadError", "Error loading dynamic library (a path)",
        OCFilePath("a path"));
    expectLeaf<OXDynamicLibrary_LoadError, OXDynamicLibrary>(
        "OXDynamicLibrary_LoadError", "Error loading dynamic library (a path, a text)",
        OCFilePath("a path"), OCAnsiString("a text"));
    expectLeaf<OXDynamicLibrary_LocateCodeError, OXDynamicLibrary>(
        "OXDynamicLibrary_LocateCodeError", "Can not locate code in dynamic library (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXDynamicLibrary_LocateDataError, OXDynamicLibrary>(
        "OXDynamicLibrary_LocateDataError", "Can not locate data in dynamic library (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXEnvironmentBlock_ReadProcessEnvironment, OXEnvironmentBlock>(
        "OXEnvironmentBlock_ReadProcessEnvironment", "Error reading process environment variables");
    expectLeaf<OXEnvironmentVariable_DeleteVariable, OXEnvironmentVariable>(
        "OXEnvironmentVariable_DeleteVariable", "Error deleting environment variable (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXEnvironmentVariable_GetValue, OXEnvironmentVariable>(
        "OXEnvironmentVariable_GetValue", "Error getting value of environment variable (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXEnvironmentVariable_SetValue, OXEnvironmentVariable>(
        "OXEnvironmentVariable_SetValue", "Error setting value of environment variable (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXEvent_CreateError, OXEvent>(
        "OXEvent_CreateError", "Error creating synchronization event (No such file or directory)",
        missing);
    expectLeaf<OXEvent_SignalError, OXEvent>(
        "OXEvent_SignalError", "Error signaling synchronization event (No such file or directory)",
        missing);
    expectLeaf<OXEvent_TimeError, OXEvent>(
        "OXEvent_TimeError", "Error acquiring current system time (No such file or directory)",
        missing);
    expectLeaf<OXEvent_WaitError, OXEvent>(
        "OXEvent_WaitError", "Error waiting for synchronization event (No such file or directory)",
        missing);
    expectLeaf<OXFileFinder_OpenDirectory, OXFileFinder>(
        "OXFileFinder_OpenDirectory", "Error opening directory for reading (some/path)",
        OCFilePath("some/path"));
    expectLeaf<OXFileManager_CreateDirectoryError, OXFileManager>(
        "OXFileManager_CreateDirectoryError",
        "Creating the directory failed (No such file or directory)", missing);
    expectLeaf<OXFileManager_DeleteDirectoryError, OXFileManager>(
        "OXFileManager_DeleteDirectoryError",
        "Deleting the directory failed (No such file or directory)", missing);
    expectLeaf<OXFileManager_DeleteFileError, OXFileManager>(
        "OXFileManager_DeleteFileError", "Deleting the file failed (No such file or directory)",
        missing);
    expectLeaf<OXFilePath_ChangeExtensionError, OXFilePath>(
        "OXFilePath_ChangeExtensionError", "Error changing extension of file path");
    expectLeaf<OXFilePath_ChangeFilenameError, OXFilePath>("OXFilePath_ChangeFilenameError",
                                                           "Error changing filename of file path");
    expectLeaf<OXFilePath_ExtractDriveError, OXFilePath>("OXFilePath_ExtractDriveError",
                                                         "Error extracting drive from file path");
    expectLeaf<OXFilePath_ExtractExtensionError, OXFilePath>(
        "OXFilePath_ExtractExtensionError", "Error extracting extension from file path");
    expectLeaf<OXFilePath_ExtractFilenameError, OXFilePath>(
        "OXFilePath_ExtractFilenameError", "Error extracting filename from file path");
    expectLeaf<OXFilePath_GetFileSizeError, OXFilePath>("OXFilePath_GetFileSizeError",
                                                        "Error getting file size of file path");
    expectLeaf<OXFilePath_GetFileTimeError, OXFilePath>("OXFilePath_GetFileTimeError",
                                                        "Error getting file time of file path");
    expectLeaf<OXFilePath_RemoveDriveError, OXFilePath>("OXFilePath_RemoveDriveError",
                                                        "Error removing drive from file path");
    expectLeaf<OXFilePath_RemoveExtensionError, OXFilePath>(
        "OXFilePath_RemoveExtensionError", "Error removing extension from file path");
    expectLeaf<OXFilePath_RemoveFilenameError, OXFilePath>(
        "OXFilePath_RemoveFilenameError", "Error removing filename from file path");
    expectLeaf<OXFilePath_SetFileTimeError, OXFilePath>("OXFilePath_SetFileTimeError",
                                                        "Error setting file time of file path");
    expectLeaf<OXFileStreamLock_AcquireError, OXFileStreamLock>(
        "OXFileStreamLock_AcquireError",
        "Can not acquire the file stream lock (No such file or directory)", missing);
    expectLeaf<OXFileStream_CreateError, OXFileStream>(
        "OXFileStream_CreateError", "Can not create the file stream (No such file or directory)",
        missing);
    expectLeaf<OXFileStream_GetTimeError, OXFileStream>(
        "OXFileStream_GetTimeError", "Can not get the file stream time (No such file or directory)",
        missing);
    expectLeaf<OXFileStream_UnlinkError, OXFileStream>(
        "OXFileStream_UnlinkError", "Can not unlink the file stream (No such file or directory)",
        missing);
    expectLeaf<OXHandleStream_ReadError, OXHandleStream>(
        "OXHandleStream_ReadError", "Can not read from file stream (No such file or directory)",
        missing);
    expectLeaf<OXHandleStream_SeekError, OXHandleStream>(
        "OXHandleStream_SeekError",
        "Can not move to the specified file stream position (No such file or directory)", missing);
    expectLeaf<OXHandleStream_SetSizeError, OXHandleStream>(
        "OXHandleStream_SetSizeError",
        "Can not set the file stream size (No such file or directory)", missing);
    expectLeaf<OXHandleStream_WriteError, OXHandleStream>(
        "OXHandleStream_WriteError", "Can not write to the file stream (No such file or directory)",
        missing);
    expectLeaf<OXHtmlError_AttributeMalformed, OXHtmlError>("OXHtmlError_AttributeMalformed",
                                                            "Malformed attribute");
    expectLeaf<OXHtmlError_CommentMalformed, OXHtmlError>("OXHtmlError_CommentMalformed",
                                                          "Malformed comment");
    expectLeaf<OXHtmlError_DocumentTypeMalformed, OXHtmlError>("OXHtmlError_DocumentTypeMalformed",
                                                               "Malformed document type");
    expectLeaf<OXHtmlError_ElementEndMalformed, OXHtmlError>("OXHtmlError_ElementEndMalformed",
                                                             "Malformed end of element");
    expectLeaf<OXHtmlError_ElementStartMalformed, OXHtmlError>("OXHtmlError_ElementStartMalformed",
                                                               "Malformed start of element");
    expectLeaf<OXHtmlError_NameMalformed, OXHtmlError>("OXHtmlError_NameMalformed",
                                                       "Malformed name");
    expectLeaf<OXHtmlError_Unexpected, OXHtmlError>("OXHtmlError_Unexpected", "Unexpected error");
    expectLeaf<OXHtmlError_Unhandled, OXHtmlError>("OXHtmlError_Unhandled", "Unhandled error");
    expectLeaf<OXIntegerConversion_ConvertSizeError, OXIntegerConversion_ConvertError>(
        "OXIntegerConversion_ConvertSizeError", "Error converting size to integer");
    expectLeaf<OXIntegerConversion_ConvertStringError, OXIntegerConversion_ConvertError>(
        "OXIntegerConversion_ConvertStringError", "Error converting string to integer");
    expectLeaf<OXMemoryBuffer_NoData, OXMemoryBuffer>(
        "OXMemoryBuffer_NoData", "The memory buffer does not contain any data");
    expectLeaf<OXMemoryBuffer_NoSuchIndex, OXMemoryBuffer>(
        "OXMemoryBuffer_NoSuchIndex", "Memory buffer index out of bounds (7)", 7UL);
    expectLeaf<OXMemoryBuffer_NullPointer, OXMemoryBuffer>("OXMemoryBuffer_NullPointer",
                                                           "Unexpected null pointer");
    expectLeaf<OXMemoryStream_NoData, OXStream>("OXMemoryStream_NoData",
                                                "The memory stream does not contain any data");
    expectLeaf<OXMutex_AcquireError, OXMutex>(
        "OXMutex_AcquireError",
        "Error waiting for synchronization mutex (No such file or directory)", missing);
    expectLeaf<OXMutex_CreateError, OXMutex>(
        "OXMutex_CreateError", "Error creating synchronization mutex (No such file or directory)",
        missing);
    expectLeaf<OXNamedList_NoSuchIndex, OXNamedList>("OXNamedList_NoSuchIndex",
                                                     "Named element index out of bounds (7)", 7UL);
    expectLeaf<OXNamedList_NoSuchName, OXNamedList>(
        "OXNamedList_NoSuchName", "Named element does not exist (a text)", OCAnsiString("a text"));
    expectLeaf<OXQueryString_NoSuchIndex, OXQueryString>(
        "OXQueryString_NoSuchIndex", "Query string index out of bounds (7)", 7UL);
    expectLeaf<OXQueryString_NoSuchName, OXQueryString>("OXQueryString_NoSuchName",
                                                        "Query element does not exist (a text)",
                                                        OCAnsiString("a text"));
    expectLeaf<OXStack_UnderflowError, OXStack>("OXStack_UnderflowError", "Stack underflow");
    expectLeaf<OXStopwatch_QueryValueError, OXStopwatch>("OXStopwatch_QueryValueError",
                                                         "Can not query stopwatch value");
    expectLeaf<OXStreamTransfer_UnassignedSource, OXStreamTransfer>(
        "OXStreamTransfer_UnassignedSource", "The source stream is unassigned");
    expectLeaf<OXStreamTransfer_UnassignedTarget, OXStreamTransfer>(
        "OXStreamTransfer_UnassignedTarget", "The target stream is unassigned");
    expectLeaf<OXStream_OperationUnsupported, OXStream>(
        "OXStream_OperationUnsupported", "The stream operation is unsupported (a text)",
        OCAnsiString("a text"));
    expectLeaf<OXStream_ReadError, OXStream>("OXStream_ReadError", "Read from the stream failed");
    expectLeaf<OXStream_WriteError, OXStream>("OXStream_WriteError",
                                              "Writing to the stream failed");
    expectLeaf<OXStringFilter_DecodeError, OXStringFilter>("OXStringFilter_DecodeError",
                                                           "Error while decoding the string");
    expectLeaf<OXStringFilter_EncodeError, OXStringFilter>("OXStringFilter_EncodeError",
                                                           "Error while decoding the string");
    expectLeaf<OXStringList_NoSuchIndex, OXStringList>("OXStringList_NoSuchIndex",
                                                       "String list index out of bounds (7)", 7UL);
    expectLeaf<OXStringList_NullString, OXStringList>(
        "OXStringList_NullString", "The string list does not contain the requested string (7)",
        7UL);
    expectLeaf<OXStringTableRowList_UnassignedObject, OXStringTableRowList>(
        "OXStringTableRowList_UnassignedObject", "The string table row is unassigned (7)", 7UL);
    expectLeaf<OXStringTableRow_UnassignedObject, OXStringTableRow>(
        "OXStringTableRow_UnassignedObject", "The string table column is unassigned (7)", 7UL);
    expectLeaf<OXString_NoSuchIndex, OXString>("OXString_NoSuchIndex",
                                               "String index out of bounds (7)", 7UL);
    expectLeaf<OXTemporaryDirectory_CreateError, OXTemporaryDirectory>(
        "OXTemporaryDirectory_CreateError",
        "Can not create the temporary directory (No such file or directory)", missing);
    expectLeaf<OXTemporaryFile_CreateError, OXTemporaryFile>(
        "OXTemporaryFile_CreateError",
        "Can not create the temporary file (No such file or directory)", missing);
    expectLeaf<OXThreadPool_JobRefused, OXThreadPool>("OXThreadPool_JobRefused",
                                                      "The thread pool job was refused");
    expectLeaf<OXSystemDirectories_LocateHomeError, OXSystemDirectories>(
        "OXSystemDirectories_LocateHomeError", "Error locating home directory");
    expectLeaf<OXSystemDirectories_LocateHomeError, OXSystemDirectories>(
        "OXSystemDirectories_LocateHomeError",
        "Error locating home directory (No such file or directory)", missing);
    expectLeaf<OXSystemGroupAccount_FindGroupError, OXSystemGroupAccount>(
        "OXSystemGroupAccount_FindGroupError", "Error finding group account");
    expectLeaf<OXSystemGroupAccount_FindGroupError, OXSystemGroupAccount>(
        "OXSystemGroupAccount_FindGroupError",
        "Error finding group account (No such file or directory)", missing);
    expectLeaf<OXSystemGroupAccount_InitializeBufferError, OXSystemGroupAccount>(
        "OXSystemGroupAccount_InitializeBufferError",
        "Error initializing buffer for group account (No such file or directory)", missing);
    expectLeaf<OXSystemMemory_MeasureMemoryError, OXSystemMemory>(
        "OXSystemMemory_MeasureMemoryError", "Error measuring physical memory");
    expectLeaf<OXSystemMemory_MeasureSwapError, OXSystemMemory>("OXSystemMemory_MeasureSwapError",
                                                                "Error measuring swap memory");
    expectLeaf<OXSystemProcess_GetAffinityError, OXSystemProcess>(
        "OXSystemProcess_GetAffinityError", "Error getting process affinity");
    expectLeaf<OXSystemProcess_LocateCurrentDirectoryError, OXSystemProcess>(
        "OXSystemProcess_LocateCurrentDirectoryError", "Error locating current directory");
    expectLeaf<OXSystemProcess_LocateCurrentExecutableError, OXSystemProcess>(
        "OXSystemProcess_LocateCurrentExecutableError", "Error locating current executable");
    expectLeaf<OXSystemProcess_SetAffinityError, OXSystemProcess>(
        "OXSystemProcess_SetAffinityError", "Error setting process affinity");
    expectLeaf<OXSystemProcess_SetGroupIdentifierError, OXSystemProcess>(
        "OXSystemProcess_SetGroupIdentifierError",
        "Error setting group identifier (No such file or directory)", missing);
    expectLeaf<OXSystemProcess_SetUserIdentifierError, OXSystemProcess>(
        "OXSystemProcess_SetUserIdentifierError",
        "Error setting user identifier (No such file or directory)", missing);
    expectLeaf<OXSystemProperties_GetNodeNameError, OXSystemProperties>(
        "OXSystemProperties_GetNodeNameError", "Error getting the node name of the system");
    expectLeaf<OXSystemProperties_SwitchModeError, OXSystemProperties>(
        "OXSystemProperties_SwitchModeError", "Error switching the system mode");
    expectLeaf<OXSystemUserAccount_FindUserError, OXSystemUserAccount>(
        "OXSystemUserAccount_FindUserError", "Error finding user account");
    expectLeaf<OXSystemUserAccount_FindUserError, OXSystemUserAccount>(
        "OXSystemUserAccount_FindUserError",
        "Error finding user account (No such file or directory)", missing);
    expectLeaf<OXSystemUserAccount_InitializeBufferError, OXSystemUserAccount>(
        "OXSystemUserAccount_InitializeBufferError",
        "Error initializing buffer for user account (No such file or directory)", missing);
    expectLeaf<OXThread_CreateError, OXThread>("OXThread_CreateError", "Error creating thread");
    expectLeaf<OXThread_WaitError, OXThread>("OXThread_WaitError", "Error waiting for thread");
    expectLeaf<OXUniqueIdentifier_MalformedString, OXUniqueIdentifier>(
        "OXUniqueIdentifier_MalformedString", "The unique identifier is malformed");
    expectLeaf<OXVariant_TypeMismatch, OXVariant>("OXVariant_TypeMismatch",
                                                  "Variant type mismatch");
    expectLeaf<OXVector_NoSuchIndex, OXVector>("OXVector_NoSuchIndex",
                                               "Vector index out of bounds (7)", 7UL);
    expectLeaf<OXVector_NullElement, OXVector>(
        "OXVector_NullElement", "The vector does not contain the requested element (7)", 7UL);
    expectLeaf<OXVector_NullVector, OXVector>("OXVector_NullVector",
                                              "The vector does not contain any elements");
    expectLeaf<OXXmlParserSource_CharacterTruncated, OXXmlParserSource>(
        "OXXmlParserSource_CharacterTruncated", "Truncated XML character");
    expectLeaf<OXXmlParser_AttributeDefinitionMalformed, OXXmlParser>(
        "OXXmlParser_AttributeDefinitionMalformed", "Malformed XML attribute definition");
    expectLeaf<OXXmlParser_AttributeListDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_AttributeListDeclarationMalformed",
        "Malformed XML attribute list declaration");
    expectLeaf<OXXmlParser_AttributeMalformed, OXXmlParser>("OXXmlParser_AttributeMalformed",
                                                            "Malformed XML attribute");
    expectLeaf<OXXmlParser_AttributeTypeMalformed, OXXmlParser>(
        "OXXmlParser_AttributeTypeMalformed", "Malformed XML attribute type");
    expectLeaf<OXXmlParser_AttributeValueMalformed, OXXmlParser>(
        "OXXmlParser_AttributeValueMalformed", "Malformed XML attribute value");
    expectLeaf<OXXmlParser_CdataSectionMalformed, OXXmlParser>("OXXmlParser_CdataSectionMalformed",
                                                               "Malformed XML CDATA section");
    expectLeaf<OXXmlParser_CommentMalformed, OXXmlParser>("OXXmlParser_CommentMalformed",
                                                          "Malformed XML comment");
    expectLeaf<OXXmlParser_ContentMalformed, OXXmlParser>("OXXmlParser_ContentMalformed",
                                                          "Malformed XML content");
    expectLeaf<OXXmlParser_ContentSpecificationMalformed, OXXmlParser>(
        "OXXmlParser_ContentSpecificationMalformed", "Malformed XML content specification");
    expectLeaf<OXXmlParser_DefaultDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_DefaultDeclarationMalformed", "Malformed XML default declaration");
    expectLeaf<OXXmlParser_DocumentTypeDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_DocumentTypeDeclarationMalformed", "Malformed XML document type declaration");
    expectLeaf<OXXmlParser_ElementDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_ElementDeclarationMalformed", "Malformed XML element declaration");
    expectLeaf<OXXmlParser_ElementMalformed, OXXmlParser>("OXXmlParser_ElementMalformed",
                                                          "Malformed XML element");
    expectLeaf<OXXmlParser_EntityDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_EntityDeclarationMalformed", "Malformed XML entity declaration");
    expectLeaf<OXXmlParser_EntityValueMalformed, OXXmlParser>("OXXmlParser_EntityValueMalformed",
                                                              "Malformed XML entity value");
    expectLeaf<OXXmlParser_NameMalformed, OXXmlParser>("OXXmlParser_NameMalformed",
                                                       "Malformed XML name");
    expectLeaf<OXXmlParser_NotationDataDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_NotationDataDeclarationMalformed", "Malformed XML notation data declaration");
    expectLeaf<OXXmlParser_NotationDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_NotationDeclarationMalformed", "Malformed XML notation declaration");
    expectLeaf<OXXmlParser_ParameterEntityReferenceMalformed, OXXmlParser>(
        "OXXmlParser_ParameterEntityReferenceMalformed",
        "Malformed XML parameter entity reference");
    expectLeaf<OXXmlParser_ProcessingInstructionMalformed, OXXmlParser>(
        "OXXmlParser_ProcessingInstructionMalformed", "Malformed XML processing instruction");
    expectLeaf<OXXmlParser_PublicIdentifierMalformed, OXXmlParser>(
        "OXXmlParser_PublicIdentifierMalformed", "Malformed XML public identifier");
    expectLeaf<OXXmlParser_SystemIdentifierMalformed, OXXmlParser>(
        "OXXmlParser_SystemIdentifierMalformed", "Malformed XML system identifier");
    expectLeaf<OXXmlParser_UnexpectedError, OXXmlParser>("OXXmlParser_UnexpectedError",
                                                         "Unexpected XML error");
    expectLeaf<OXXmlParser_UnhandledError, OXXmlParser>("OXXmlParser_UnhandledError",
                                                        "Unhandled XML error");
    expectLeaf<OXXmlParser_XmlDeclarationMalformed, OXXmlParser>(
        "OXXmlParser_XmlDeclarationMalformed", "Malformed XML declaration");
}

TEST(ExceptionTree, FamiliesAreOnlyBases) {
    expectAllFamilies();
}

TEST(ExceptionTree, LeavesHaveTheirTextsAndBases) {
    expectAllLeaves();
}

TEST(ExceptionTree, EveryExceptionClassIsInThisTest) {
    expectAllFamilies();
    expectAllLeaves();
    // These have tests of their own.
    checked.insert({"OXException", "OXAutoException", "OXMemory", "OXMemory_AllocationError"});
    std::set<std::string> declared;
    const std::regex declaration("class ORVABASE_EXPORT (OX\\w+)\\s*:");
    const std::filesystem::path headers = std::filesystem::path(ORVABASE_SOURCE_DIR) / "include";
    for (const auto& header : std::filesystem::directory_iterator(headers)) {
        std::ifstream file(header.path());
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        for (std::sregex_iterator each(text.begin(), text.end(), declaration), end; each != end;
             ++each)
            declared.insert((*each)[1]);
    }
    EXPECT_EQ(declared, checked);
}

} // namespace
