#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

/// An input file that can't be used; what() tells the file, the line where there is one, and the reason.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An output file that can't be made; what() tells the file and the reason.
class BadOutput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The ending of a file's name in lower case, with its dot; empty if there is none.
std::string endingOf(const std::string& path);

/// The path with another ending: `stem.old` and `.new` make `stem.new`.
std::string withEnding(const std::string& path, const std::string& ending);

[[noreturn]] void failFile(const std::string& path, const std::string& reason);

/// All bytes of a file; BadInput for folders and for what can't be read.
std::string contentOf(const std::string& path);

/// Goes through the words of a text file, line by line, and tells the file and the line in all complaints (BadInput).
class LineReader {
public:
    /// What follows the character `comment` in a line is skipped.
    LineReader(const std::string& path, std::string content, char comment = '\0');
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Goes to the next line that isn't blank. False at the end of the file.
    bool next();
    /// The same where a line must follow, which is told as `expected` if there is none.
    void need(const std::string& expected);

    /// What is left of the line.
    std::string_view rest() const { return line; }
    /// The next word of the line, empty behind the last one.
    std::string_view word();

    // The next word as a number; where there is none, or another kind of word, this complains.

    double number();
    std::int64_t integer();
    /// An integer that isn't negative.
    std::size_t count();

    [[noreturn]] void fail(const std::string& reason) const;
    const std::string& getPath() const { return path; }

private:
    std::string_view neededWord();

    std::string path;
    std::string content;
    std::string_view left;  ///< lines that are still to come
    std::string_view line;
    std::size_t lineNumber = 0;
    char comment;
};

/// Writes a text file. A number is written with as few digits as bring the same one back, whatever the locale.
class TextWriter {
public:
    explicit TextWriter(const std::string& path);
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    TextWriter& operator<<(std::string_view text);
    TextWriter& operator<<(char character);
    TextWriter& operator<<(double number);
    TextWriter& operator<<(std::size_t number);
    TextWriter& operator<<(int number);

    /// Ends the file, which has to be done; BadOutput if something couldn't be written.
    void close();

private:
    void flush();

    std::string path;
    std::ofstream file;
    std::string buffer;
};
