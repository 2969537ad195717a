// VelmarBase: shaders.
#pragma once

#include "VelmarExport.h"
#include "base/BPath.h"
#include "base/BString.h"

/// @file
/// The text file in which generated shading leaves sources, compile messages and warnings. It stands in the directory
/// in which the process was when the library was loaded, as "debugShaderPreview.log", unless the host names another.
/// Each call opens and closes it, so that it can be read at any time; a log that cannot be written is ignored. No line
/// end is added to what is written. GL thread only.

/// Appends text made by printf rules, when the current scene's delegate wants shader debugging. A result may have any
/// length; a format of more than 1024 bytes is not formatted, and written as it stands with a banner below.
VELMAR_EXPORT void VXShaderDebug(const char* format, ...) FENWICK_PRINTF(1, 2);
VELMAR_EXPORT void VXShaderFileDebug(const char* format, ...) FENWICK_PRINTF(1, 2); ///< the same, without asking

/// Appends a long text in pieces of `chunk` bytes, each by VXShaderDebug, which takes the piece as its format: per cent
/// signs must be doubled. A piece that would end inside such a pair ends before it. With a chunk below 1 the text is
/// one piece. An empty text makes one empty append.
VELMAR_EXPORT void VXShaderDebugLong(const char* text, int chunk);

VELMAR_EXPORT void VXShaderDebugSetLogFile(const BPath& path);
VELMAR_EXPORT void VXShaderFileDebugReset();   ///< empties the log and writes its heading, with the time
VELMAR_EXPORT BString VXShaderFileDebugTime(); ///< "Mon Nov 23 04:05:06 2026" and a line end, local time
