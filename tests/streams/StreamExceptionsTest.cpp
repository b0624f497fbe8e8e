#include "OCFileStream.h"
#include "OCMemoryStream.h"
#include "OCStreamTransfer.h"

#include "support/FaultInjection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>

namespace {

/// Making an exception with a detail takes memory: whichever request fails, that is the failure
/// reported, and nothing is left behind.
template<class Exception, class Detail>
void expectCleanFailure(const Detail& detail) {
    EXPECT_EQ(fault::blocksLeftBy(
                  [&] { EXPECT_GE(fault::failEachRequest([&] { Exception made(detail); }), 1U); }),
              0);
}

} // namespace

TEST(StreamExceptions, MakingOneInExhaustedMemoryIsAnAllocationFailure) {
    const unsigned int code = ENOENT;
    expectCleanFailure<OXStream_OperationUnsupported>(OCAnsiString("seek"));
    expectCleanFailure<OXHandleStream_ReadError>(code);
    expectCleanFailure<OXHandleStream_SeekError>(code);
    expectCleanFailure<OXHandleStream_SetSizeError>(code);
    expectCleanFailure<OXHandleStream_WriteError>(code);
    expectCleanFailure<OXFileStream_CreateError>(code);
    expectCleanFailure<OXFileStream_GetTimeError>(code);
    expectCleanFailure<OXFileStream_UnlinkError>(code);
    expectCleanFailure<OXFileStreamLock_AcquireError>(code);
}

TEST(StreamExceptions, AreDeletedThroughAnyOfTheirBases) {
    EXPECT_EQ(
        fault::blocksLeftBy([] {
            for (OCObject* object : std::initializer_list<OCObject*>{
                     new OXStream_OperationUnsupported("seek"), new OXStream_ReadError,
                     new OXStream_WriteError, new OXMemoryStream_NoData,
                     new OXHandleStream_ReadError(EIO), new OXHandleStream_SeekError(EIO),
                     new OXHandleStream_SetSizeError(EIO), new OXHandleStream_WriteError(EIO),
                     new OXFileStream_CreateError(EIO), new OXFileStream_GetTimeError(EIO),
                     new OXFileStream_UnlinkError(EIO), new OXFileStreamLock_AcquireError(EIO),
                     new OXStreamTransfer_UnassignedSource, new OXStreamTransfer_UnassignedTarget})
                delete object;
        }),
        0);
}

TEST(StreamExceptions, StreamsAreDeletedThroughTheirBase) {
    EXPECT_EQ(fault::blocksLeftBy([] {
                  OCFileStream* file =
                      new OCFileStream("/dev/null", FileCreateModeReadWrite, FileShareModeNone);
                  OCObject* lock = new OCFileStreamLock(*file);
                  delete lock;
                  for (OCStream* stream : std::initializer_list<OCStream*>{
                           file, new OCHandleStream, new OCMemoryStream, new OCNullStream})
                      delete stream;
              }),
              0);
}

TEST(StreamExceptions, CopiesCarryTheSameTexts) {
    const OXHandleStream_ReadError original(ENOENT);
    const OXHandleStream_ReadError copy(original);
    OXHandleStream_ReadError assigned(EIO);
    assigned = original;
    EXPECT_TRUE(copy.getClass() == "OXHandleStream_ReadError");
    EXPECT_TRUE(copy.getMessage() == original.getMessage());
    EXPECT_TRUE(assigned.getMessage() ==
                "Can not read from file stream (No such file or directory)");
}

TEST(StreamExceptions, AreCaughtByTheirFamilies) {
    EXPECT_THROW(throw OXFileStreamLock_AcquireError(EINVAL), OXFileStreamLock);
    EXPECT_THROW(throw OXFileStreamLock_AcquireError(EINVAL), OXFileStream);
    EXPECT_THROW(throw OXFileStream_CreateError(EINVAL), OXHandleStream);
    EXPECT_THROW(throw OXHandleStream_ReadError(EINVAL), OXStream);
    EXPECT_THROW(throw OXMemoryStream_NoData(), OXStream);
    EXPECT_THROW(throw OXStream_ReadError(), OXAutoException);
    EXPECT_THROW(throw OXStream_ReadError(), OXException);
}
