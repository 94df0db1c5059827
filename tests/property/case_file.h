// case_file.h: random cases in files, one a line (case_text.h), between a line that says what they are about and one
// that says how many they are. Written and read one case at a time: a device has no room for all of them.
#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "properties.h"
#include "random_case.h"

// What is wrong with a file, with its path and line.
struct CaseFileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

class CaseWriter {
public:
    // seed: what the cases were generated from, in digits.
    CaseWriter(const std::string &path, const Property &property, const std::string &seed);
    void add(const RandomCase &random_case);
    void finish(); // a file without its last line is refused when it is read

private:
    void write(const std::string &line);

    std::string path_;
    FileHandle file_;
    unsigned long cases_ = 0;
};

class CaseReader {
public:
    explicit CaseReader(const std::string &path);

    const Property &property() const { return *property_; }

    // False when there are no more.
    bool next(RandomCase &random_case);

    // "path:line", of what was read last.
    std::string place() const { return path_ + ":" + std::to_string(line_); }

private:
    bool read_line();
    void read_heading();
    void read_ending();
    [[noreturn]] void refuse(const std::string &what) const;

    std::string path_;
    FileHandle file_;
    unsigned long line_ = 0;
    std::string text_;
    const Property *property_ = nullptr;
    unsigned long cases_ = 0;
};
