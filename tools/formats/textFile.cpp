#include "textFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <utility>

#include "../numbers.h"

namespace {

constexpr std::string_view blanks = " \t\r\v\f";

/// So much is gathered before it goes to the file.
constexpr std::size_t bufferSize = std::size_t{1} << 18;

template <class Number>
void appendNumber(std::string& buffer, Number number) {
    constexpr std::size_t longest = 32;  // -1.7976931348623157e+308 has 24 characters
    std::array<char, longest> digits;
    const char* const pEnd = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    buffer.append(digits.data(), static_cast<std::size_t>(pEnd - digits.data()));
}

}  // namespace

std::string endingOf(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return ending;
}

std::string withEnding(const std::string& path, const std::string& ending) {
    return std::filesystem::path(path).replace_extension(ending).string();
}

void failFile(const std::string& path, const std::string& reason) { throw BadInput(path + ": " + reason); }

std::string contentOf(const std::string& path) {
    if (std::filesystem::is_directory(path)) failFile(path, "is a folder");
    std::ifstream in(path, std::ios::binary);
    if (!in) failFile(path, "can't be read");
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad()) failFile(path, "can't be read");
    return std::move(content).str();
}

// Reading

LineReader::LineReader(const std::string& path_, std::string content_, char comment_)
    : path(path_), content(std::move(content_)), left(content), comment(comment_) {}

bool LineReader::next() {
    while (!left.empty()) {
        line = left.substr(0, left.find('\n'));
        left.remove_prefix(std::min(line.size() + 1, left.size()));
        ++lineNumber;
        if (comment != '\0') line = line.substr(0, line.find(comment));
        if (line.find_first_not_of(blanks) != std::string_view::npos) return true;
    }
    line = {};
    return false;
}

void LineReader::need(const std::string& expected) {
    if (!next()) failFile(path, "ends where " + expected + " should follow");
}

std::string_view LineReader::word() { return takeWord(line, blanks); }

std::string_view LineReader::neededWord() {
    const std::string_view found = word();
    if (found.empty()) fail("a number is missing");
    return found;
}

double LineReader::number() {
    try {
        return parseNumber(neededWord());
    } catch (const BadNumber& reason) {
        fail(reason.what());
    }
}

std::int64_t LineReader::integer() {
    try {
        return parseInteger(neededWord());
    } catch (const BadNumber& reason) {
        fail(reason.what());
    }
}

std::size_t LineReader::count() {
    const std::int64_t value = integer();
    if (value < 0) fail(std::to_string(value) + " is negative");
    return static_cast<std::size_t>(value);
}

void LineReader::fail(const std::string& reason) const {
    throw BadInput(path + ":" + std::to_string(lineNumber) + ": " + reason);
}

// Writing

TextWriter::TextWriter(const std::string& path_) : path(path_), file(path_, std::ios::binary) {
    if (!file) throw BadOutput(path + ": can't be written");
}

TextWriter& TextWriter::operator<<(std::string_view text) {
    buffer += text;
    if (buffer.size() >= bufferSize) flush();
    return *this;
}

TextWriter& TextWriter::operator<<(char character) {
    buffer += character;
    return *this;
}

TextWriter& TextWriter::operator<<(double number) {
    appendNumber(buffer, number);
    return *this;
}

TextWriter& TextWriter::operator<<(std::size_t number) {
    appendNumber(buffer, number);
    return *this;
}

TextWriter& TextWriter::operator<<(int number) {
    appendNumber(buffer, number);
    return *this;
}

void TextWriter::flush() {
    file.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    buffer.clear();
}

void TextWriter::close() {
    flush();
    file.close();
    if (!file) throw BadOutput(path + ": can't be written");
}
