// case_file.cpp: writes and reads files of random cases.
#include "case_file.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "case_text.h"

static constexpr std::string_view heading = "cases of ";
static constexpr std::string_view heading_seed = ", seed ";

static std::string ending(unsigned long cases) { return "end of " + std::to_string(cases) + " cases"; }

static FileHandle open(const std::string &path, const char *mode, const char *what) {
    FileHandle file(std::fopen(path.c_str(), mode));
    if (!file) throw CaseFileError(path + ": cannot " + what + ": " + std::strerror(errno));
    return file;
}

// ---- Writing ----

CaseWriter::CaseWriter(const std::string &path, const Property &property, const std::string &seed)
    : path_(path), file_(open(path, "w", "write")) {
    write(std::string(heading) + property.name + std::string(heading_seed) + seed);
}

void CaseWriter::write(const std::string &line) {
    if (std::fprintf(file_.get(), "%s\n", line.c_str()) < 0)
        throw CaseFileError(path_ + ": cannot write: " + std::strerror(errno));
}

void CaseWriter::add(const RandomCase &random_case) {
    write(case_text(random_case));
    ++cases_;
}

void CaseWriter::finish() {
    write(ending(cases_));
    if (std::fclose(file_.release()) != 0) throw CaseFileError(path_ + ": cannot write: " + std::strerror(errno));
}

// ---- Reading ----

CaseReader::CaseReader(const std::string &path) : path_(path), file_(open(path, "r", "read")) { read_heading(); }

void CaseReader::refuse(const std::string &what) const { throw CaseFileError(place() + ": " + what); }

// False at the file's end.
bool CaseReader::read_line() {
    text_.clear();
    ++line_;
    int character = std::fgetc(file_.get());
    for (; character != EOF && character != '\n'; character = std::fgetc(file_.get()))
        text_ += static_cast<char>(character);
    if (std::ferror(file_.get())) refuse(std::string("cannot read: ") + std::strerror(errno));
    return character != EOF || !text_.empty();
}

static std::string quoted(std::string_view text) { return '"' + std::string(text.substr(0, 40)) + '"'; }

void CaseReader::read_heading() {
    read_line();
    std::string_view rest = text_;
    std::size_t comma = rest.find(heading_seed);
    if (!rest.starts_with(heading) || comma == std::string_view::npos)
        refuse("found " + quoted(rest) + ", expected \"cases of SUBJECT, seed NUMBER\"");
    std::string_view subject = rest.substr(heading.size(), comma - heading.size());
    property_ = property_named(subject);
    if (property_) return;
    std::string expected;
    for (const Property &property : all_properties())
        expected += std::string(expected.empty() ? "" : ", ") + property.name;
    refuse("found subject " + quoted(subject) + ", expected one of " + expected);
}

void CaseReader::read_ending() {
    std::string expected = ending(cases_);
    if (text_ != expected) refuse("found " + quoted(text_) + ", expected \"" + expected + "\"");
    if (read_line()) refuse("found " + quoted(text_) + ", expected the file's end");
}

bool CaseReader::next(RandomCase &random_case) {
    if (!read_line()) refuse("found the file's end, expected a case or \"" + ending(cases_) + "\"");
    if (text_.starts_with("end")) {
        read_ending();
        return false;
    }
    try {
        random_case = case_from_text(text_);
    } catch (const std::invalid_argument &fault) {
        refuse(fault.what());
    }
    ++cases_;
    return true;
}
