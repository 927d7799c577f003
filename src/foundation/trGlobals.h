#pragma once
// The library's load-time globals that are plain values. All of them are defined in
// trGlobals.cpp, in the order in which they must be constructed.

class trString;

// The display name a parameter has until one is set.
extern trString const trEmptySentinel;
extern trString const trUnsignedLongFormat;
// The host's program folder; the host fills it.
extern trString trAppPath;

// Marks a path key that has no registered path, and the keys of the output folders.
extern trString const trDefaultFilePath;
extern trString const trRenderOutputPathKey;
extern trString const trSequenceOutputPathKey;
extern trString const trTemporaryOutputFilesPathKey;
