#include "OCStringTable.h"

#include "OCMemory.h"
#include "OCStringConversion.h"

#include <memory>

OXStringTable::OXStringTable() = default;

OXStringTable::~OXStringTable() noexcept = default;

OXStringTableRow::OXStringTableRow() = default;

OXStringTableRow::~OXStringTableRow() noexcept = default;

OXStringTableRow_UnassignedObject::OXStringTableRow_UnassignedObject(unsigned long column) {
    setClass("OXStringTableRow_UnassignedObject");
    setMessage("The string table column is unassigned");
    getDetails().addString(OCStringConversion::fromSize(column, 10));
}

OXStringTableRow_UnassignedObject::~OXStringTableRow_UnassignedObject() noexcept = default;

OXStringTableRowList::OXStringTableRowList() = default;

OXStringTableRowList::~OXStringTableRowList() noexcept = default;

OXStringTableRowList_UnassignedObject::OXStringTableRowList_UnassignedObject(unsigned long row) {
    setClass("OXStringTableRowList_UnassignedObject");
    setMessage("The string table row is unassigned");
    getDetails().addString(OCStringConversion::fromSize(row, 10));
}

OXStringTableRowList_UnassignedObject::~OXStringTableRowList_UnassignedObject() noexcept = default;

OCStringTableRow::OCStringTableRow() noexcept
    : cells(StringListCaseInsensitive, StringListModeUnsorted) {}

OCStringTableRow::~OCStringTableRow() noexcept = default;

void OCStringTableRow::clear() noexcept {
    // Takes an empty list's array, of no slots, so that it need not ask for a smaller one.
    cells = OCStringList(cells.getCase(), cells.getMode());
}

void OCStringTableRow::addString(const OCAnsiString& text) {
    setString(cells.getCount(), text);
}

void OCStringTableRow::setString(unsigned long column, const OCAnsiString& text) {
    cells.putString(column, text);
}

OCAnsiString& OCStringTableRow::getString(unsigned long column) {
    if (!hasString(column))
        throw OXStringTableRow_UnassignedObject(column);
    return cells.getString(column);
}

const OCAnsiString& OCStringTableRow::getString(unsigned long column) const {
    if (!hasString(column))
        throw OXStringTableRow_UnassignedObject(column);
    return cells.getString(column);
}

OCStringTableRowList::OCStringTableRowList() noexcept = default;

OCStringTableRowList::~OCStringTableRowList() noexcept {
    clear();
}

OCStringTableRow& OCStringTableRowList::getRow(unsigned long row) {
    if (!hasRow(row))
        throw OXStringTableRowList_UnassignedObject(row);
    return static_cast<OCStringTableRow&>(rows.getElement(row));
}

const OCStringTableRow& OCStringTableRowList::getRow(unsigned long row) const {
    if (!hasRow(row))
        throw OXStringTableRowList_UnassignedObject(row);
    return static_cast<const OCStringTableRow&>(rows.getElement(row));
}

void OCStringTableRowList::clear() noexcept {
    try {
        OCVectorUtilities(rows).deleteElements();
    } catch (const OXMemory_AllocationError&) {
        // The rows are gone; only the array of slots could not be made smaller.
        rows = OCVector();
    }
}

void OCStringTableRowList::addString(const OCAnsiString& text, bool newRow) {
    const unsigned long count = getCount();
    if (newRow)
        setString(count, 0, text);
    else
        getRow(count == 0 ? 0 : count - 1).addString(text);
}

void OCStringTableRowList::setString(unsigned long row, unsigned long column,
                                     const OCAnsiString& text) {
    if (hasRow(row)) {
        getRow(row).setString(column, text);
        return;
    }
    // The row is complete before it gets its place, so that a failure leaves no trace.
    std::unique_ptr<OCStringTableRow> added(new OCStringTableRow);
    added->setString(column, text);
    putRow(row, *added);
    static_cast<void>(added.release());
}

void OCStringTableRowList::putRow(unsigned long row, OCStringTableRow& added) {
    if (row >= getCount()) {
        if (row == ~0UL)
            throw OXMemory_AllocationError();
        rows.setCount(row + 1);
    }
    rows.setElement(row, added);
}

OCStringTable::OCStringTable() : rows(nullptr) {
    initialize();
}

OCStringTable::~OCStringTable() noexcept {
    destroy();
}

void OCStringTable::initialize() {
    initializeRows();
}

void OCStringTable::initializeRows() {
    rows = new OCStringTableRowList;
}

void OCStringTable::destroy() noexcept {
    destroyRows();
}

void OCStringTable::destroyRows() noexcept {
    OCObjectDisposer disposer(rows);
    rows = nullptr;
}
