// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "base/BFile.h"
#include "base/GEOM.h"

/// @file
/// Wavefront OBJ text to mesh record and back.
///
/// Read: v (with or without w and colours), vt, vn, f and p and l with any corner form and negative indices, g with
/// several names, o, s (numbers, off), usemtl, mtllib (names kept), line continuation, CRLF, a byte order mark,
/// comments, free-form white space. Unknown statements are skipped. In detail:
/// - Faces stay polygons of any number of corners, those with repeated corners included; faces with fewer than 3
///   corners are left out and counted. Each l and each p statement makes one polygon, of type line or point, with all
///   the corners it names.
/// - v takes 3 numbers, 4 (w is read and dropped), 6 (position and colour) or 7 (position, w, colour). Once a vertex
///   has a colour, those without are white.
/// - An index may name an element that comes later in the file.
/// - A polygon has texture coordinates only when all its corners do. Where only some corners have normals, the others
///   get the flat normal of their polygon. Without any vn in corners the record has normals but no normalSets.
/// - "s n" is bit n-1 of the smoothing word, numbers above 32 start over at 1; several numbers are several bits;
///   "s off" and "s 0" are no bits, "s on" is group 1.
/// - A g statement names all groups that the following polygons are in; g alone means none. Every named group takes a
///   bit in every polygon record. Groups that would make the records take more than 64 times the size of the file
///   (and more than 16 MiB) are left out and counted.
/// - Polygons before the first usemtl use a material "Default", when there is any usemtl. Names of o and usemtl go to
///   the end of the line and may have blanks inside; mtllib names end at ".mtl" or with the line.

/// What happened while reading. Line numbers start at 1.
struct GEOM_ReadReport
{
    BString error;               ///< empty when the file could be read; otherwise what is wrong and what was expected
    std::int64_t errorLine = 0;  ///< line of the error, 0 when it has none (memory, empty file)
    std::int64_t shortFaces = 0; ///< faces with fewer than 3 corners that were left out
    std::int64_t shortFaceLine = 0; ///< line of the first of them
    std::int64_t groupsLeftOut = 0; ///< named groups for which the polygon records have no room
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

/// Writes all that the reader reads, numbers in the shortest form that reads back to the same float: reading what was
/// written gives a record equal to one that was read. Polygons that the reader would leave out, and those of a type
/// that OBJ does not know, are left out. Line feeds and other characters that would end a name early become
/// underscores.
/// @return 0, or -1 when the record holds a number that is not finite (nothing is written then), or the file could not
///         be written in full
FENWICK_EXPORT int GEOM_WriteObjFile(const GEOM* g, BFile& file);
