#include "OCVariant.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

constexpr const char* mismatch = "Variant type mismatch";

static_assert(sizeof(OCVariantData) == 24, "a type and a pointer");
static_assert(sizeof(OCVariant) == 16, "a pointer");

const std::string longText(300, 'L');

OCAnsiString longString() {
    return OCAnsiString(longText.data(), longText.size());
}

std::string printed(const OCVariant& variant) {
    std::ostringstream stream;
    stream << variant;
    return stream.str();
}

/// Says that it is deleted.
class Tracer : public OCObject {
public:
    explicit Tracer(int& deletions) : count(deletions) {}
    ~Tracer() noexcept(false) override { ++count; }

private:
    int& count;
};

/// Throws when it is deleted.
class Thrower : public OCObject {
public:
    ~Thrower() noexcept(false) override { throw 1; }
};

/// Which getters of a variant do not throw, one character each.
std::string readable(const OCVariant& variant) {
    std::string result;
    const auto note = [&](char name, auto get) {
        try {
            get();
            result += name;
        } catch (const OXVariant_TypeMismatch&) {
        }
    };
    note('b', [&] { variant.getBoolean(); });
    note('s', [&] { variant.getIntegerSigned(); });
    note('u', [&] { variant.getIntegerUnsigned(); });
    note('m', [&] { variant.getMemoryBuffer(); });
    note('a', [&] { variant.getStringAnsi(); });
    note('w', [&] { variant.getStringWide(); });
    return result;
}

TEST(OCVariant, ClassesHaveTheirShape) {
    EXPECT_EQ(2u, slots::slotCount<OCVariantData>());
    EXPECT_EQ(2u, slots::slotCount<OCVariant>());
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCVariantData>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCVariant>);
    EXPECT_EQ(4u, sizeof(OEVariantType));
    EXPECT_EQ(0, VariantTypeUnassigned);
    EXPECT_EQ(1, VariantTypeBoolean);
    EXPECT_EQ(2, VariantTypeSignedInteger);
    EXPECT_EQ(3, VariantTypeUnsignedInteger);
    EXPECT_EQ(4, VariantTypeMemoryBuffer);
    EXPECT_EQ(5, VariantTypeAnsiString);
    EXPECT_EQ(6, VariantTypeWideString);
}

TEST(OCVariant, ANewOneIsUnassigned) {
    const OCVariant variant;
    EXPECT_EQ(VariantTypeUnassigned, variant.getType());
    EXPECT_FALSE(variant.isAssigned());
    EXPECT_EQ("", readable(variant));
    EXPECT_EXCEPTION(variant.getBoolean(), OXVariant_TypeMismatch, mismatch);
    EXPECT_EXCEPTION(variant.getIntegerSigned(), OXVariant_TypeMismatch, mismatch);
    EXPECT_EXCEPTION(variant.getIntegerUnsigned(), OXVariant_TypeMismatch, mismatch);
    EXPECT_EXCEPTION(variant.getMemoryBuffer(), OXVariant_TypeMismatch, mismatch);
    EXPECT_EXCEPTION(variant.getStringAnsi(), OXVariant_TypeMismatch, mismatch);
    EXPECT_EXCEPTION(variant.getStringWide(), OXVariant_TypeMismatch, mismatch);
}

TEST(OCVariant, TheMismatchHasNoDetails) {
    const OCVariant variant;
    try {
        variant.getBoolean();
        FAIL();
    } catch (const OXVariant_TypeMismatch& failure) {
        EXPECT_EQ(0u, failure.getDetails().getCount());
    }
}

TEST(OCVariant, HoldsABoolean) {
    OCVariant variant;
    variant.setBoolean(true);
    EXPECT_EQ(VariantTypeBoolean, variant.getType());
    EXPECT_TRUE(variant.isAssigned());
    EXPECT_TRUE(variant.getBoolean().getValue());
    EXPECT_EQ("b", readable(variant));
    variant.setBoolean(false);
    EXPECT_FALSE(variant.getBoolean().getValue());
    EXPECT_TRUE(variant.isAssigned());
}

TEST(OCVariant, HoldsASignedInteger) {
    OCVariant variant;
    variant.setIntegerSigned(INT_MIN);
    EXPECT_EQ(VariantTypeSignedInteger, variant.getType());
    EXPECT_EQ(INT_MIN, variant.getIntegerSigned().getValue());
    EXPECT_EQ("s", readable(variant));
}

TEST(OCVariant, HoldsAnUnsignedInteger) {
    OCVariant variant;
    variant.setIntegerUnsigned(UINT_MAX);
    EXPECT_EQ(VariantTypeUnsignedInteger, variant.getType());
    EXPECT_EQ(UINT_MAX, variant.getIntegerUnsigned().getValue());
    EXPECT_EQ("u", readable(variant));
}

TEST(OCVariant, HoldsAMemoryBuffer) {
    OCVariant variant;
    OCMemoryBuffer buffer("abc", 3);
    variant.setMemoryBuffer(buffer);
    buffer[0] = 'x';
    EXPECT_EQ(VariantTypeMemoryBuffer, variant.getType());
    EXPECT_TRUE(variant.getMemoryBuffer() == OCMemoryBuffer("abc", 3));
    EXPECT_EQ("m", readable(variant));
    variant.setMemoryBuffer(OCMemoryBuffer());
    EXPECT_EQ(0u, variant.getMemoryBuffer().getSize());
    EXPECT_TRUE(variant.isAssigned());
}

TEST(OCVariant, HoldsANarrowString) {
    OCVariant variant;
    OCAnsiString text("abc");
    variant.setStringAnsi(text);
    text = "x";
    EXPECT_EQ(VariantTypeAnsiString, variant.getType());
    EXPECT_EQ(OCAnsiString("abc"), variant.getStringAnsi());
    EXPECT_EQ("a", readable(variant));
    EXPECT_EXCEPTION(variant.getStringWide(), OXVariant_TypeMismatch, mismatch);
}

TEST(OCVariant, HoldsAWideString) {
    OCVariant variant;
    variant.setStringWide(OCWideString(L"abc\x100"));
    EXPECT_EQ(VariantTypeWideString, variant.getType());
    EXPECT_EQ(OCWideString(L"abc\x100"), variant.getStringWide());
    EXPECT_EQ("w", readable(variant));
}

TEST(OCVariant, ANewValueReplacesTheOldOne) {
    OCVariant variant;
    variant.setStringAnsi(longString());
    variant.setIntegerSigned(-5);
    EXPECT_EQ("s", readable(variant));
    variant.setStringWide(OCWideString(L"w"));
    EXPECT_EQ("w", readable(variant));
    variant.setMemoryBuffer(OCMemoryBuffer("abc", 3));
    EXPECT_EQ("m", readable(variant));
    variant.setIntegerUnsigned(5u);
    EXPECT_EQ("u", readable(variant));
    variant.setBoolean(true);
    EXPECT_EQ("b", readable(variant));
    variant.setStringAnsi("a");
    EXPECT_EQ("a", readable(variant));
}

TEST(OCVariant, ASetterMayBeGivenTheValueHeld) {
    OCVariant variant;
    variant.setStringAnsi(longString());
    variant.setStringAnsi(variant.getStringAnsi());
    EXPECT_EQ(longString(), variant.getStringAnsi());
    variant.setStringWide(OCWideString(longString()));
    variant.setStringWide(variant.getStringWide());
    EXPECT_EQ(OCWideString(longString()), variant.getStringWide());
    variant.setMemoryBuffer(OCMemoryBuffer(longText.data(), longText.size()));
    variant.setMemoryBuffer(variant.getMemoryBuffer());
    EXPECT_TRUE(variant.getMemoryBuffer() == OCMemoryBuffer(longText.data(), longText.size()));
    variant.setIntegerSigned(-7);
    variant.setIntegerSigned(variant.getIntegerSigned());
    EXPECT_EQ(-7, variant.getIntegerSigned().getValue());
}

TEST(OCVariant, ClearDropsTheValue) {
    OCVariant variant;
    variant.clear();
    EXPECT_FALSE(variant.isAssigned());
    variant.setStringAnsi("abc");
    variant.clear();
    EXPECT_EQ(VariantTypeUnassigned, variant.getType());
    EXPECT_EQ("", readable(variant));
    variant.setBoolean(true);
    EXPECT_EQ("b", readable(variant));
}

TEST(OCVariant, CopiesAreDeep) {
    OCVariant variant;
    variant.setMemoryBuffer(OCMemoryBuffer("abc", 3));
    OCVariant copy(variant);
    EXPECT_TRUE(copy.getMemoryBuffer() == OCMemoryBuffer("abc", 3));
    EXPECT_NE(&variant.getMemoryBuffer(), &copy.getMemoryBuffer());
    copy.setMemoryBuffer(OCMemoryBuffer("x", 1));
    EXPECT_TRUE(variant.getMemoryBuffer() == OCMemoryBuffer("abc", 3));

    OCVariant assigned;
    assigned.setStringAnsi("old");
    EXPECT_EQ(&assigned, &(assigned = variant));
    EXPECT_TRUE(assigned.getMemoryBuffer() == OCMemoryBuffer("abc", 3));
    EXPECT_NE(&variant.getMemoryBuffer(), &assigned.getMemoryBuffer());
    EXPECT_EQ(&assigned, &assigned.assign(OCVariant()));
    EXPECT_FALSE(assigned.isAssigned());
}

TEST(OCVariant, EveryKindIsCopied) {
    OCVariant variant, copy;
    variant.setBoolean(true);
    copy = variant;
    EXPECT_TRUE(copy.getBoolean().getValue());
    variant.setIntegerSigned(-3);
    copy = variant;
    EXPECT_EQ(-3, copy.getIntegerSigned().getValue());
    variant.setIntegerUnsigned(3u);
    copy = variant;
    EXPECT_EQ(3u, copy.getIntegerUnsigned().getValue());
    variant.setStringAnsi(longString());
    copy = variant;
    EXPECT_EQ(longString(), copy.getStringAnsi());
    variant.setStringWide(OCWideString(longString()));
    copy = variant;
    EXPECT_EQ(OCWideString(longString()), copy.getStringWide());
    variant.clear();
    copy = variant;
    EXPECT_FALSE(copy.isAssigned());
}

TEST(OCVariant, AssignedToItselfItStaysAsItIs) {
    OCVariant variant;
    variant.setStringAnsi(longString());
    const OCAnsiString* const held = &variant.getStringAnsi();
    const OCVariant& same = variant;
    variant = same;
    EXPECT_EQ(held, &variant.getStringAnsi());
    EXPECT_EQ(longString(), variant.getStringAnsi());
}

TEST(OCVariant, PrintsItsValue) {
    OCVariant variant;
    EXPECT_EQ("", printed(variant));
    variant.setBoolean(true);
    EXPECT_EQ("true", printed(variant));
    variant.setBoolean(false);
    EXPECT_EQ("false", printed(variant));
    variant.setIntegerSigned(-12);
    EXPECT_EQ("-12", printed(variant));
    variant.setIntegerUnsigned(UINT_MAX);
    EXPECT_EQ("4294967295", printed(variant));
    variant.setMemoryBuffer(OCMemoryBuffer("abc", 3));
    EXPECT_EQ("", printed(variant));
    variant.setStringAnsi("abc");
    EXPECT_EQ("abc", printed(variant));
    variant.setStringWide(OCWideString(L"wide"));
    EXPECT_EQ("wide", printed(variant));
}

TEST(OCVariant, PrintingReturnsTheStream) {
    std::ostringstream stream;
    OCVariant variant;
    variant.setIntegerSigned(1);
    EXPECT_EQ(&stream, &(stream << variant));
    EXPECT_EQ(&stream, &(stream << OCVariant()));
    EXPECT_EQ("1", stream.str());
}

TEST(OCVariant, FailedSettersChangeNothing) {
    OCVariant variant;
    variant.setStringAnsi("kept");
    const OCMemoryBuffer buffer(1000);
    const OCAnsiString text(longString());
    const OCWideString wide(text);
    OCVariant other;
    other.setStringAnsi(text);
    const auto check = [&] { EXPECT_EQ(OCAnsiString("kept"), variant.getStringAnsi()); };
    const auto restore = [&](auto operation) {
        return [&variant, operation] {
            OCVariant subject(variant);
            const OCAnsiString* const held = &subject.getStringAnsi();
            try {
                operation(subject);
            } catch (const OXMemory_AllocationError&) {
                EXPECT_EQ(held, &subject.getStringAnsi());
                EXPECT_STREQ("kept", subject.getStringAnsi().getString());
                throw;
            }
        };
    };
    const long blocks = fault::heapRecord().liveBlocks;
    // The subject takes two requests, its value one.
    EXPECT_EQ(3u, fault::failEachRequest(restore([](OCVariant& v) { v.setBoolean(true); }), check));
    EXPECT_EQ(3u, fault::failEachRequest(restore([](OCVariant& v) { v.setIntegerSigned(1); })));
    EXPECT_EQ(3u, fault::failEachRequest(restore([](OCVariant& v) { v.setIntegerUnsigned(1); })));
    EXPECT_EQ(4u,
              fault::failEachRequest(restore([&](OCVariant& v) { v.setMemoryBuffer(buffer); })));
    EXPECT_EQ(4u, fault::failEachRequest(restore([&](OCVariant& v) { v.setStringAnsi(text); })));
    EXPECT_EQ(4u, fault::failEachRequest(restore([&](OCVariant& v) { v.setStringWide(wide); })));
    EXPECT_EQ(4u, fault::failEachRequest(restore([&](OCVariant& v) { v = other; })));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TEST(OCVariant, FailedConstructorsLeaveNothing) {
    OCVariant variant;
    variant.setStringAnsi(longString());
    const long blocks = fault::heapRecord().liveBlocks;
    EXPECT_EQ(1u, fault::failEachRequest([] { const OCVariant made; }));
    EXPECT_EQ(3u, fault::failEachRequest([&] { const OCVariant made(variant); }));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TEST(OCVariantData, ANewOneIsUnassigned) {
    const OCVariantData data;
    EXPECT_EQ(VariantTypeUnassigned, data.getType());
    EXPECT_EQ(nullptr, data.getObject());
}

TEST(OCVariantData, TakesWhatItIsGiven) {
    OCVariantData data;
    OCObject* const object = new OCBoolean(true);
    data.setObject(object);
    EXPECT_EQ(object, data.getObject());
    EXPECT_EQ(VariantTypeUnassigned, data.getType());
    data.setType(VariantTypeBoolean);
    EXPECT_EQ(VariantTypeBoolean, data.getType());
}

TEST(OCVariantData, ItsObjectDiesWithIt) {
    int deletions = 0;
    {
        OCVariantData data;
        data.setObject(new Tracer(deletions));
        data.setType(VariantTypeBoolean);
    }
    EXPECT_EQ(1, deletions);
    {
        OCVariantData data;
        data.setObject(new Tracer(deletions));
    }
    EXPECT_EQ(2, deletions);
}

TEST(OCVariantData, SetObjectDoesNotDelete) {
    int deletions = 0;
    OCVariantData data;
    Tracer first(deletions);
    data.setObject(&first);
    data.setObject(new Tracer(deletions));
    EXPECT_EQ(0, deletions);
}

TEST(OCVariantData, ClearDeletesTheObjectOfAType) {
    int deletions = 0;
    OCVariantData data;
    data.setObject(new Tracer(deletions));
    data.clear();
    // Without a type there is nothing to clear.
    EXPECT_EQ(0, deletions);
    EXPECT_NE(nullptr, data.getObject());
    data.setType(static_cast<OEVariantType>(99));
    data.clear();
    EXPECT_EQ(1, deletions);
    EXPECT_EQ(nullptr, data.getObject());
    EXPECT_EQ(VariantTypeUnassigned, data.getType());
    data.clear();
    EXPECT_EQ(1, deletions);
}

TEST(OCVariantData, ClearTakesATypeWithoutAnObject) {
    for (const int type : {1, 4, 6, 99, -1}) {
        OCVariantData data;
        data.setType(static_cast<OEVariantType>(type));
        data.clear();
        EXPECT_EQ(VariantTypeUnassigned, data.getType());
        EXPECT_EQ(nullptr, data.getObject());
    }
}

TEST(OCVariantData, ExceptionsOfDestructorsAreDropped) {
    OCVariantData data;
    data.setObject(new Thrower);
    data.setType(VariantTypeBoolean);
    data.clear();
    EXPECT_EQ(nullptr, data.getObject());
    data.setObject(new Thrower);
    data = OCVariantData();
    EXPECT_EQ(nullptr, data.getObject());
    OCVariantData* const other = new OCVariantData;
    other->setObject(new Thrower);
    delete other;
}

TEST(OCVariantData, CopiesMakeObjectsOfTheTypesClass) {
    OCVariantData data;
    data.setObject(new OCWideString(L"text"));
    data.setType(VariantTypeWideString);
    const OCVariantData copy(data);
    ASSERT_NE(nullptr, copy.getObject());
    EXPECT_NE(data.getObject(), copy.getObject());
    EXPECT_EQ(VariantTypeWideString, copy.getType());
    EXPECT_EQ(OCWideString(L"text"), dynamic_cast<OCWideString&>(*copy.getObject()));
}

TEST(OCVariantData, AssignReplacesWhatWasHeld) {
    int deletions = 0;
    OCVariantData data;
    data.setObject(new Tracer(deletions));
    data.setType(VariantTypeBoolean);
    OCVariantData other;
    other.setObject(new OCSignedInteger(-4));
    other.setType(VariantTypeSignedInteger);
    EXPECT_EQ(&data, &data.assign(other));
    EXPECT_EQ(1, deletions);
    EXPECT_EQ(-4, dynamic_cast<OCSignedInteger&>(*data.getObject()).getValue());
    data = OCVariantData();
    EXPECT_EQ(VariantTypeUnassigned, data.getType());
    EXPECT_EQ(nullptr, data.getObject());
    // An object without a type, too.
    data.setObject(new Tracer(deletions));
    data = other;
    EXPECT_EQ(2, deletions);
}

TEST(OCVariantData, AssignedToItselfItStaysAsItIs) {
    OCVariantData data;
    OCObject* const object = new OCBoolean(true);
    data.setObject(object);
    data.setType(VariantTypeBoolean);
    const OCVariantData& same = data;
    data = same;
    EXPECT_EQ(object, data.getObject());
    EXPECT_EQ(VariantTypeBoolean, data.getType());
}

TEST(OCVariantData, TypesAloneAreCopiedAlone) {
    for (const int type : {7, 99, -1, INT_MAX, INT_MIN}) {
        OCVariantData data;
        data.setObject(new OCBoolean(true));
        data.setType(static_cast<OEVariantType>(type));
        const OCVariantData copy(data);
        EXPECT_EQ(type, copy.getType());
        EXPECT_EQ(nullptr, copy.getObject());
        OCVariantData assigned;
        assigned = data;
        EXPECT_EQ(type, assigned.getType());
        EXPECT_EQ(nullptr, assigned.getObject());
    }
    OCVariantData bare;
    bare.setType(VariantTypeAnsiString);
    const OCVariantData copy(bare);
    EXPECT_EQ(VariantTypeAnsiString, copy.getType());
    EXPECT_EQ(nullptr, copy.getObject());

    OCVariantData untyped;
    untyped.setObject(new OCBoolean(true));
    const OCVariantData other(untyped);
    EXPECT_EQ(VariantTypeUnassigned, other.getType());
    EXPECT_EQ(nullptr, other.getObject());
}

TEST(OCVariantData, AnObjectOfAnotherClassIsNotCopied) {
    for (int type = VariantTypeBoolean; type <= VariantTypeWideString; ++type) {
        OCVariantData data, target;
        int deletions = 0;
        data.setObject(new Tracer(deletions));
        data.setType(static_cast<OEVariantType>(type));
        target.setObject(new OCBoolean(true));
        target.setType(VariantTypeBoolean);
        EXPECT_EXCEPTION(OCVariantData copy(data), OXVariant_TypeMismatch, mismatch);
        EXPECT_EXCEPTION(target = data, OXVariant_TypeMismatch, mismatch);
        EXPECT_EQ(VariantTypeBoolean, target.getType());
        EXPECT_TRUE(dynamic_cast<OCBoolean&>(*target.getObject()).getValue());
    }
}

TEST(OCVariantData, FailedAssignmentsChangeNothing) {
    OCVariantData source;
    source.setObject(new OCAnsiString(longString()));
    source.setType(VariantTypeAnsiString);
    OCVariantData target;
    OCObject* const object = new OCBoolean(true);
    target.setObject(object);
    target.setType(VariantTypeBoolean);
    const long blocks = fault::heapRecord().liveBlocks;
    EXPECT_EQ(2u, fault::failEachRequest([&] { const OCVariantData copy(source); }));
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
    EXPECT_EQ(2u, fault::failEachRequest([&] { target = source; },
                                         [&] {
                                             EXPECT_EQ(object, target.getObject());
                                             EXPECT_EQ(VariantTypeBoolean, target.getType());
                                         }));
    EXPECT_EQ(VariantTypeAnsiString, target.getType());
}

} // namespace
