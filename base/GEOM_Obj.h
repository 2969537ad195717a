// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "base/BFile.h"
#include "base/GEOM.h"

/// @file
/// Wavefront OBJ text to mesh record and back.
///
/// Read: v (with or without colours or w), vt, vn, f and p and l with any corner form and negative indices, g with
/// several names, o, s (number, off), usemtl, mtllib (names kept), line continuation, CRLF, a byte order mark,
/// comments, free-form white space. Polygons stay polygons of any number of corners. Unknown statements are skipped.
/// Faces with repeated corners are kept as they stand; faces with fewer than 3 corners are left out and counted.

/// What happened while reading. Line numbers start at 1.
struct GEOM_ReadReport
{
    BString error;               ///< empty when the file could be read; otherwise what is wrong and what was expected
    std::int64_t errorLine = 0;  ///< line of the error, 0 when it has none (memory, empty file)
    std::int64_t shortFaces = 0; ///< faces with fewer than 3 corners that were left out
    std::int64_t shortFaceLine = 0; ///< line of the first of them
    std::int64_t lines = 0;         ///< lines read
};

/// Called now and then with the fraction read (0..1); a non-zero answer cancels reading, which is reported as an error.
using GEOM_ProgressProc = int (*)(float fraction);

/// Reads a whole file. One pass over the bytes; memory stays within a small multiple of the input.
/// @return a new record that the caller frees, or null; `report`, when given, says why
FENWICK_EXPORT GEOM* GEOM_ReadObjFile(BFile& file, GEOM_ProgressProc progress = nullptr,
                                      GEOM_ReadReport* report = nullptr);

/// The same from memory. `text` need not be terminated.
FENWICK_EXPORT GEOM* GEOM_ReadObjText(const char* text, std::size_t size, GEOM_ProgressProc progress = nullptr,
                                      GEOM_ReadReport* report = nullptr);

/// Writes all that the reader reads, numbers in the shortest form that reads back to the same float.
/// @return 0, or -1 when the file could not be written in full
FENWICK_EXPORT int GEOM_WriteObjFile(const GEOM* g, BFile& file);
