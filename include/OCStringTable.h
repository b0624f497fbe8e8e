#ifndef ORVABASE_OCSTRINGTABLE_H
#define ORVABASE_OCSTRINGTABLE_H

#include "OCStringList.h"

/// A row of a string table: cells, each of which holds a text or is unassigned.
///
/// The row owns copies of its texts. It cannot be copied. Not for use by several threads at once.
///
///     OCStringTableRow row;
///     row.setString(2, "third");
///     row.getCount();       // 3
///     row.hasString(0);     // false
class ORVABASE_EXPORT OCStringTableRow : public OCObject {
public:
    /// A row without cells.
    OCStringTableRow() noexcept;
    OCStringTableRow(const OCStringTableRow&) = delete;
    OCStringTableRow& operator=(const OCStringTableRow&) = delete;
    ~OCStringTableRow() noexcept override;

    /// The number of cells, the unassigned ones included.
    unsigned long getCount() const { return cells.getCount(); }
    /// Removes all cells.
    void clear() noexcept;

    /// Appends a cell with a copy of `text`.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void addString(const OCAnsiString& text);
    /// Gives the cell at `column` a copy of `text`. If there are fewer cells, unassigned ones are
    /// added up to there.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setString(unsigned long column, const OCAnsiString& text);

    /// The text of the cell at `column`; the reference lasts until the row is cleared.
    /// @throws OXStringTableRow_UnassignedObject when there is no such cell or it is unassigned.
    OCAnsiString& getString(unsigned long column);
    const OCAnsiString& getString(unsigned long column) const;
    /// Whether there is such a cell and it holds a text.
    bool hasString(unsigned long column) const { return cells.hasString(column); }

private:
    OCStringList cells;
};

/// The rows of a string table, each of which may be unassigned.
///
/// The list makes and owns its rows. It cannot be copied. Not for use by several threads at once.
///
///     OCStringTableRowList rows;
///     rows.setString(1, 0, "text");
///     rows.hasRow(0);                    // false
///     rows.getRow(1).getString(0);       // text
class ORVABASE_EXPORT OCStringTableRowList : public OCObject {
public:
    /// A list without rows.
    OCStringTableRowList() noexcept;
    OCStringTableRowList(const OCStringTableRowList&) = delete;
    OCStringTableRowList& operator=(const OCStringTableRowList&) = delete;
    ~OCStringTableRowList() noexcept override;

    /// The number of rows, the unassigned ones included.
    unsigned long getCount() const { return rows.getCount(); }
    /// Whether there is such a row and it is assigned.
    bool hasRow(unsigned long row) const { return rows.hasElement(row); }
    /// The row; the reference lasts until the list is cleared.
    /// @throws OXStringTableRowList_UnassignedObject when there is no such row or it is unassigned.
    OCStringTableRow& getRow(unsigned long row);
    const OCStringTableRow& getRow(unsigned long row) const;
    /// Deletes all rows.
    void clear() noexcept;

    /// Adds a copy of `text`: with `newRow` as the first cell of a new row at the end, otherwise as
    /// a new cell at the end of the last row.
    /// @throws OXStringTableRowList_UnassignedObject when there is no row to add a cell to (with
    /// row 0), OXMemory_AllocationError; nothing is changed then.
    void addString(const OCAnsiString& text, bool newRow);
    /// Gives a cell a copy of `text`. Rows and cells that do not exist are made: that row and that
    /// cell, and unassigned ones in front of them.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setString(unsigned long row, unsigned long column, const OCAnsiString& text);

    /// The text of a cell; the reference lasts until its row is cleared.
    /// @throws OXStringTableRowList_UnassignedObject, OXStringTableRow_UnassignedObject
    OCAnsiString& getString(unsigned long row, unsigned long column) {
        return getRow(row).getString(column);
    }
    const OCAnsiString& getString(unsigned long row, unsigned long column) const {
        return getRow(row).getString(column);
    }
    /// Whether there is such a cell and it holds a text.
    bool hasString(unsigned long row, unsigned long column) const {
        return hasRow(row) && getRow(row).hasString(column);
    }

private:
    void putRow(unsigned long row, OCStringTableRow& added);

    OCVector rows;
};

/// A sparse table of strings. Cells come into being when they are set; reading a cell that is not
/// there is an error, which says whether it is the row or the column that is missing.
///
/// The table owns copies of its texts. It cannot be copied. Not for use by several threads at once.
///
///     OCStringTable table;
///     table.addString("name", true);
///     table.addString("value", false);   // the second cell of row 0
///     table.setString(3, 2, "far");
///     table.hasString(1, 0);             // false
///     table.getString(0, 1);             // value
class ORVABASE_EXPORT OCStringTable : public OCObject {
public:
    /// An empty table.
    /// @throws OXMemory_AllocationError
    OCStringTable();
    OCStringTable(const OCStringTable&) = delete;
    OCStringTable& operator=(const OCStringTable&) = delete;
    ~OCStringTable() noexcept override;

    /// The rows, which stay the table's own.
    OCStringTableRowList& getRows() { return *rows; }
    const OCStringTableRowList& getRows() const { return *rows; }
    /// The number of rows, the unassigned ones included.
    unsigned long getRowCount() const { return rows->getCount(); }

    /// The following do what the list of rows does.
    void clear() noexcept { rows->clear(); }
    /// Adds a cell to a new row at the end, or to the last row.
    /// @throws OXStringTableRowList_UnassignedObject, OXMemory_AllocationError
    void addString(const OCAnsiString& text, bool newRow) { rows->addString(text, newRow); }
    /// Sets the text of a cell.
    /// @throws OXMemory_AllocationError
    void setString(unsigned long row, unsigned long column, const OCAnsiString& text) {
        rows->setString(row, column, text);
    }
    /// The text of a cell.
    /// @throws OXStringTableRowList_UnassignedObject, OXStringTableRow_UnassignedObject
    OCAnsiString& getString(unsigned long row, unsigned long column) {
        return rows->getString(row, column);
    }
    const OCAnsiString& getString(unsigned long row, unsigned long column) const {
        return getRows().getString(row, column);
    }
    /// Whether there is such a cell and it holds a text.
    bool hasString(unsigned long row, unsigned long column) const {
        return rows->hasString(row, column);
    }

protected:
    /// The constructor and the destructor are made of these steps.
    void initialize();
    void initializeRows();
    void destroy() noexcept;
    void destroyRows() noexcept;

private:
    OCStringTableRowList* rows;
};

/// The family of the string table's failures.
class ORVABASE_EXPORT OXStringTable : public OXAutoException {
public:
    ~OXStringTable() noexcept override;

protected:
    OXStringTable();
};

/// The failures of a row.
class ORVABASE_EXPORT OXStringTableRow : public OXStringTable {
public:
    ~OXStringTableRow() noexcept override;

protected:
    OXStringTableRow();
};

/// "The string table column is unassigned", with the column.
class ORVABASE_EXPORT OXStringTableRow_UnassignedObject : public OXStringTableRow {
public:
    explicit OXStringTableRow_UnassignedObject(unsigned long column);
    ~OXStringTableRow_UnassignedObject() noexcept override;
};

/// The failures of a list of rows.
class ORVABASE_EXPORT OXStringTableRowList : public OXStringTable {
public:
    ~OXStringTableRowList() noexcept override;

protected:
    OXStringTableRowList();
};

/// "The string table row is unassigned", with the row.
class ORVABASE_EXPORT OXStringTableRowList_UnassignedObject : public OXStringTableRowList {
public:
    explicit OXStringTableRowList_UnassignedObject(unsigned long row);
    ~OXStringTableRowList_UnassignedObject() noexcept override;
};

#endif
