// The one string type of the engine: a narrow string in the system's ANSI code page, with value
// semantics, built on the standard string.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#if defined(__GNUC__)
#define ENGINE_PRINTF(formatIndex, firstArg) __attribute__((format(printf, formatIndex, firstArg)))
#else
#define ENGINE_PRINTF(formatIndex, firstArg)
#endif

class CStdStr : public std::string {
public:
    CStdStr() = default;
    // A null pointer, or a value below 0x10000 (a resource number passed where text is
    // expected), gives the empty string.
    CStdStr(const char* text);
    CStdStr(const char* text, size_t length) : std::string(text, length) {}
    CStdStr(size_t count, char c) : std::string(count, c) {}
    CStdStr(const std::string& text) : std::string(text) {}
    CStdStr(std::string&& text) : std::string(std::move(text)) {}
    explicit CStdStr(std::string_view text) : std::string(text) {}

    CStdStr& operator=(const char* text);
    CStdStr& operator=(const std::string& text);
    CStdStr& operator=(std::string&& text);

    // printf-style assignment; there is no limit on the length of the result.
    void Format(const char* format, ...) ENGINE_PRINTF(2, 3);
    void FormatV(const char* format, va_list args);
    void AppendFormat(const char* format, ...) ENGINE_PRINTF(2, 3);
    static CStdStr Formatted(const char* format, ...) ENGINE_PRINTF(1, 2);

    int GetLength() const { return static_cast<int>(size()); }
    bool IsEmpty() const { return empty(); }
    char GetAt(int index) const { return (*this)[static_cast<size_t>(index)]; }

    // Counts are clamped to the string, as CString clamps them.
    CStdStr Left(int count) const;
    CStdStr Mid(int first) const;
    CStdStr Mid(int first, int count) const;
    CStdStr Right(int count) const;

    // Positions, or -1.
    int Find(char c, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char c) const;
    int FindOneOf(const char* characters) const;

    // The number of replacements.
    int Replace(char from, char to);
    int Replace(const char* from, const char* to);
    int Remove(char c);

    // Compares folding case through the ANSI code page's case tables.
    int CompareNoCase(const std::string& other) const;
    bool EqualsNoCase(const std::string& other) const { return CompareNoCase(other) == 0; }

    CStdStr& MakeUpper();
    CStdStr& MakeLower();
    CStdStr& Trim();
    CStdStr& TrimLeft();
    CStdStr& TrimRight();
    CStdStr& Trim(char c);
    CStdStr& TrimLeft(char c);
    CStdStr& TrimRight(char c);

    // Case mapping of single bytes in the ANSI code page.
    static char ToLower(char c);
    static char ToUpper(char c);
    static bool IsSpace(char c);
    static int CompareNoCase(std::string_view a, std::string_view b);
    // Takes the case tables anew from the platform, after the locale or code page changed.
    static void RefreshCaseTables();
};

// Orders strings without regard to case, for maps keyed by names.
struct NoCaseLess {
    bool operator()(const std::string& a, const std::string& b) const {
        return CStdStr::CompareNoCase(a, b) < 0;
    }
};
