#pragma once

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

/// Gathers what is written to std::cout and std::cerr during its lifetime.
class CaptureOutput {
public:
    CaptureOutput()
        : pOldOut(std::cout.rdbuf(outBuffer.rdbuf())), pOldErr(std::cerr.rdbuf(errBuffer.rdbuf())) {}
    ~CaptureOutput() {
        std::cout.rdbuf(pOldOut);
        std::cerr.rdbuf(pOldErr);
    }
    CaptureOutput(const CaptureOutput&) = delete;
    CaptureOutput& operator=(const CaptureOutput&) = delete;

    std::string out() const { return outBuffer.str(); }
    std::string err() const { return errBuffer.str(); }
    /// Whether the text is somewhere on standard output.
    bool told(const std::string& text) const { return out().find(text) != std::string::npos; }

private:
    std::ostringstream outBuffer;
    std::ostringstream errBuffer;
    std::streambuf* pOldOut;
    std::streambuf* pOldErr;
};

/// How often the word is in the text.
inline int countOf(const std::string& text, const std::string& word) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += word.size()) ++count;
    return count;
}

/// What is written in a file.
inline std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
