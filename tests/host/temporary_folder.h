// temporary_folder.h: a folder of a test's own with the files that it writes, gone afterwards.
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <doctest/doctest.h>

class TemporaryFolder {
public:
    TemporaryFolder() {
        const char *const parent = std::getenv("TMPDIR");
        const std::string stem = std::string(parent != nullptr ? parent : "/tmp") + "/kelhost_";
        // By count rather than mkdtemp(), which newlib has but cannot do.
        for (int number = 0; path_.empty(); ++number) {
            const std::string path = stem + std::to_string(number);
            if (mkdir(path.c_str(), 0700) == 0)
                path_ = path;
            else
                REQUIRE_MESSAGE(errno == EEXIST, path, ": ", std::strerror(errno));
        }
    }
    ~TemporaryFolder() {
        for (const std::string &file : files_) std::remove(file.c_str());
        rmdir(path_.c_str());
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &path() const { return path_; }

    // Returns the file's path.
    std::string write(const std::string &name, std::string_view bytes) {
        const std::string file = path_ + "/" + name;
        files_.push_back(file);
        std::FILE *const stream = std::fopen(file.c_str(), "wb");
        REQUIRE(stream != nullptr);
        CHECK(std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size());
        CHECK(std::fclose(stream) == 0);
        return file;
    }

private:
    std::string path_;
    std::vector<std::string> files_;
};
