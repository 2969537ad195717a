// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"
#include "base/BPath.h"

/// The entries of one folder, in order of their names (bytewise), "." and ".." left out.
class FENWICK_EXPORT BDir
{
public:
    explicit BDir(const BPath& path) : mPath(path) {}

    int Open(); ///< reads the folder; 0, or -1 when it cannot be read

    /// Names of entries that match the pattern: '*' stands for any run of bytes, '?' for one. Empty before Open.
    BArray<BString> List(const BString& pattern = "*") const;

    static int Create(const BPath& path); ///< with missing parents; 0 also when it exists already, else -1
    static BPath Temporary();             ///< the system's folder for temporary files

private:
    BPath mPath;
    BArray<BString> mNames;
};
