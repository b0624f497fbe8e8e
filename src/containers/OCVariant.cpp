#include "OCVariant.h"

#include <ostream>

OXVariant::OXVariant() = default;

OXVariant::~OXVariant() noexcept = default;

OXVariant_TypeMismatch::OXVariant_TypeMismatch() {
    setClass("OXVariant_TypeMismatch");
    setMessage("Variant type mismatch");
}

OXVariant_TypeMismatch::~OXVariant_TypeMismatch() noexcept = default;

namespace {

template<class Value>
OCObject* copyAs(const OCObject& object) {
    const Value* const value = dynamic_cast<const Value*>(&object);
    if (value == nullptr)
        throw OXVariant_TypeMismatch();
    return new Value(*value);
}

} // namespace

OCVariantData::OCVariantData(const OCVariantData& other)
    : OCObject(other), type(other.type), object(copyObject(other)) {}

OCVariantData::~OCVariantData() noexcept {
    OCObjectDisposer disposer(object);
}

OCVariantData& OCVariantData::assign(const OCVariantData& other) {
    if (this == &other)
        return *this;
    OCObject* const copy = copyObject(other);
    OCObjectDisposer disposer(object);
    object = copy;
    type = other.type;
    return *this;
}

void OCVariantData::clear() noexcept {
    if (type == VariantTypeUnassigned)
        return;
    OCObjectDisposer disposer(object);
    object = nullptr;
    type = VariantTypeUnassigned;
}

OCObject* OCVariantData::copyObject(const OCVariantData& other) {
    if (other.object == nullptr)
        return nullptr;
    switch (other.type) {
    case VariantTypeBoolean:
        return copyAs<OCBoolean>(*other.object);
    case VariantTypeSignedInteger:
        return copyAs<OCSignedInteger>(*other.object);
    case VariantTypeUnsignedInteger:
        return copyAs<OCUnsignedInteger>(*other.object);
    case VariantTypeMemoryBuffer:
        return copyAs<OCMemoryBuffer>(*other.object);
    case VariantTypeAnsiString:
        return copyAs<OCAnsiString>(*other.object);
    case VariantTypeWideString:
        return copyAs<OCWideString>(*other.object);
    case VariantTypeUnassigned:
        break;
    }
    return nullptr;
}

OCVariant::OCVariant() : data(nullptr) {
    initialize();
}

OCVariant::OCVariant(const OCVariant& other) : OCObject(other), data(nullptr) {
    initialize();
    try {
        assign(other);
    } catch (...) {
        destroy();
        throw;
    }
}

OCVariant::~OCVariant() noexcept {
    destroy();
}

void OCVariant::initialize() {
    initializeData();
}

void OCVariant::initializeData() {
    data = new OCVariantData;
}

void OCVariant::destroy() noexcept {
    destroyData();
}

void OCVariant::destroyData() noexcept {
    OCObjectDisposer disposer(data);
    data = nullptr;
}

OCVariant& OCVariant::assign(const OCVariant& other) {
    data->assign(*other.data);
    return *this;
}

void OCVariant::setBoolean(const OCBoolean& value) {
    setObject(VariantTypeBoolean, new OCBoolean(value));
}

void OCVariant::setIntegerSigned(const OCSignedInteger& value) {
    setObject(VariantTypeSignedInteger, new OCSignedInteger(value));
}

void OCVariant::setIntegerUnsigned(const OCUnsignedInteger& value) {
    setObject(VariantTypeUnsignedInteger, new OCUnsignedInteger(value));
}

void OCVariant::setMemoryBuffer(const OCMemoryBuffer& value) {
    setObject(VariantTypeMemoryBuffer, new OCMemoryBuffer(value));
}

void OCVariant::setStringAnsi(const OCAnsiString& value) {
    setObject(VariantTypeAnsiString, new OCAnsiString(value));
}

void OCVariant::setStringWide(const OCWideString& value) {
    setObject(VariantTypeWideString, new OCWideString(value));
}

void OCVariant::setObject(OEVariantType type, OCObject* object) noexcept {
    data->clear();
    data->setObject(object);
    data->setType(type);
}

const OCBoolean& OCVariant::getBoolean() const {
    return static_cast<const OCBoolean&>(getObject(VariantTypeBoolean));
}

const OCSignedInteger& OCVariant::getIntegerSigned() const {
    return static_cast<const OCSignedInteger&>(getObject(VariantTypeSignedInteger));
}

const OCUnsignedInteger& OCVariant::getIntegerUnsigned() const {
    return static_cast<const OCUnsignedInteger&>(getObject(VariantTypeUnsignedInteger));
}

const OCMemoryBuffer& OCVariant::getMemoryBuffer() const {
    return static_cast<const OCMemoryBuffer&>(getObject(VariantTypeMemoryBuffer));
}

const OCAnsiString& OCVariant::getStringAnsi() const {
    return static_cast<const OCAnsiString&>(getObject(VariantTypeAnsiString));
}

const OCWideString& OCVariant::getStringWide() const {
    return static_cast<const OCWideString&>(getObject(VariantTypeWideString));
}

const OCObject& OCVariant::getObject(OEVariantType type) const {
    if (data->getType() != type)
        throw OXVariant_TypeMismatch();
    return *data->getObject();
}

std::ostream& operator<<(std::ostream& stream, const OCVariant& variant) {
    switch (variant.getType()) {
    case VariantTypeBoolean:
        return stream << variant.getBoolean();
    case VariantTypeSignedInteger:
        return stream << variant.getIntegerSigned();
    case VariantTypeUnsignedInteger:
        return stream << variant.getIntegerUnsigned();
    case VariantTypeAnsiString:
        return stream << variant.getStringAnsi();
    case VariantTypeWideString:
        return stream << variant.getStringWide();
    case VariantTypeMemoryBuffer:
    case VariantTypeUnassigned:
        break;
    }
    return stream;
}
