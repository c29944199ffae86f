// Line reader and writer under all text files: single-byte text in the system's code page, or
// UTF-16 little-endian marked by FF FE. Lines are written with CR LF.
#pragma once

#include "core/CStdStr.h"

#include <cstdio>
#include <string>

class TextFile {
public:
    enum Mode { Read = 0, Write = 1, Append = 2 };
    enum Encoding { Detect = 0, SingleByte = 1, Utf16 = 2 };

    TextFile() = default;
    ~TextFile() { Close(); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    // With encoding 0 the file decides: FF FE at its head means UTF-16, anything else (also a
    // missing or short file) single-byte text. Append to a missing file writes a new one.
    bool Open(const CStdStr& path, int mode, int encoding);
    // True while a line was read: a non-empty one, or any line before the end.
    bool ReadString(CStdStr& line);
    bool WriteString(const CStdStr& text);
    void Close();

    int GetEncoding() const { return mEncoding; }
    bool IsOpen() const { return mFile != nullptr; }

private:
    // The next byte of the file, or EOF; read through a block buffer, as a byte at a time from
    // the stream would take the stream's lock for every byte.
    int nextByte();
    bool fillBuffer();

    int mEncoding = SingleByte;
    std::FILE* mFile = nullptr;
    std::string mBuffer;
    std::size_t mPosition = 0;
};
