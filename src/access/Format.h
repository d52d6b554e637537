#pragma once

#include <QtGlobal>

namespace mdb {

enum PageType : quint8 {
    DataPage = 1,
    DefinitionPage = 2,
    UsageMapPage = 5,
};

/// Where a data page states how many bytes are free between its row table and its rows.
inline constexpr int freeSpaceOffset = 2;

/// Flags in the two high bits of a row's offset.
inline constexpr quint16 deletedRow = 0x8000; ///< to be skipped: deleted, or reached by a pointer
inline constexpr quint16 pointerRow = 0x4000; ///< holds a pointer to the row
inline constexpr quint16 rowOffsetBits = 0x1FFF;

/// What differs between the versions of the format: sizes and offsets in bytes, as the public
/// description in mdbtools' HACKING file gives them.
struct Format
{
    int pageSize;

    // Data pages.
    int rowCount;      ///< offset of the number of rows
    int rowTable;      ///< offset of the table of row offsets
    int rowHeaderSize; ///< bytes of the column count at a row's start

    // Definitions; offsets into the concatenated contents of their pages.
    int statedRows;
    int maxColumns;
    int variableColumns;
    int columns;
    int indexes;
    int ownedPages;
    int indexStart;
    int indexSize;
    int columnSize;

    // One column of a definition.
    int columnNumber;
    int columnVariableIndex;
    int columnScale;
    int columnFlags;
    int columnMoreFlags; ///< -1 where there are none
    int columnFixedOffset;
    int columnLength;

    bool isJet3() const { return rowHeaderSize == 1; }
};

inline constexpr Format jet3Format = {
    2048, 8,  10, 1,                     //
    12,   21, 23, 25, 31, 35, 43, 8, 18, //
    1,    3,  12, 13, -1, 14, 16,
};

inline constexpr Format jet4Format = {
    4096, 12, 14, 2,                      //
    16,   41, 43, 45, 51, 55, 63, 12, 25, //
    5,    7,  12, 15, 16, 21, 23,
};

} // namespace mdb
