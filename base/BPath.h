// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BString.h"

#include <filesystem>

/// A path of a file or folder, UTF-8 in and out on every system.
class FENWICK_EXPORT BPath
{
public:
    BPath() = default;
    BPath(const char* utf8) : BPath(BString(utf8)) {} // NOLINT: conversion from literals is wanted
    BPath(const BString& utf8);                       // NOLINT

    BString FullPath() const;  ///< the whole path as it was given, with the system's separators
    BString FileName() const;  ///< last component: "a/b.obj" gives "b.obj"
    BString BaseName() const;  ///< last component without its extension
    BString Extension() const; ///< without the dot: "a/b.tar.gz" gives "gz"; empty when there is none
    BPath Parent() const;
    BPath Joined(const BString& component) const;        ///< an absolute component replaces the whole path
    BPath WithExtension(const BString& extension) const; ///< extension without the dot; empty removes it
    BPath Absolute() const;

    bool IsEmpty() const { return mPath.empty(); }
    bool IsAbsolute() const { return mPath.is_absolute(); }
    bool Exists() const;
    bool IsFile() const;
    bool IsFolder() const;
    const std::filesystem::path& Std() const { return mPath; }

    friend bool operator==(const BPath& a, const BPath& b) { return a.mPath == b.mPath; }

private:
    std::filesystem::path mPath;
};

/// A path that finds a plain file name where the process works: a relative name is completed with the working
/// directory at construction, so that later changes of directory do not move it.
class FENWICK_EXPORT BKelvoPath : public BPath
{
public:
    explicit BKelvoPath(const BString& fileName) : BPath(BPath(fileName).Absolute()) {}
};
