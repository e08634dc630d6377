#pragma once

#include <Norvik_2D.h>

#include <functional>
#include <stdexcept>
#include <string>

constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

/// What the command line tells; each command reads what it offers.
struct Options {
    std::string input;
    std::string pointsInput;
    std::string pictureFile;
    std::string pointsFile;
    int numThreads = 1;
    bool bConforming = false;
    bool bCheck = false;
    bool bProgress = false;
};

// The commands print a summary on standard output, write the files that are asked for, and return the exit status. Input
// that can't be used ends in BadInput, before anything is printed.

int triangulate(const Options& options);
int constrain(const Options& options);

// What they have in common

/// An output file that can't be made; what() tells the file and the reason.
class BadOutput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Does the work, with a bar on standard error if that is wanted and a terminal. Returns the seconds that it took.
double doTimed(KELMAR_NORVIK2D::Norvik_2D& mesh, const Options& options, const std::function<void()>& work);

void writePicture(KELMAR_NORVIK2D::Norvik_2D& mesh, const std::string& path);

/// The exit status: failure if a check was asked for and finds faults, which are told.
int checkIfAsked(KELMAR_NORVIK2D::Norvik_2D& mesh, const Options& options);
