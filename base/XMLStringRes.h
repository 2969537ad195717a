// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BPath.h"
#include "base/BString.h"

/// Localised texts, looked up by table and entry number in one XML file:
/// `<strings><table id="82"><entry id="561">Perspective Camera</entry></table></strings>`.
/// Process-wide; loaded once by the host. A missing service, table or entry answers the fallback.
class FENWICK_EXPORT XMLStringRes
{
public:
    /// Replaces all texts by those of the file. 0, or -1 for a file that cannot be read (the old texts stay);
    /// `error`, when given, then says what and where.
    static int Load(const BPath& file, BString* error = nullptr);
    static void Unload();
    static bool IsLoaded();
    static BString Get(int table, int entry, const char* fallback);
};
