// test_file.cpp: reading whole files, and paths.
#include <string>

#include <doctest/doctest.h>

#include "file.h"
#include "temporary_folder.h"

using kelhost::folder_of;
using kelhost::join_path;
using kelhost::read_file;

TEST_CASE("a file is read byte by byte, zeros and line ends as they are") {
    TemporaryFolder folder;
    const std::string bytes("a\r\nb\0c\n", 7);
    folder.write("file", bytes);
    std::string why;
    CHECK(read_file(folder.path() + "/file", why) == bytes);
    CHECK(why.empty());
}

TEST_CASE("an empty file is an empty text and not a failure") {
    TemporaryFolder folder;
    folder.write("file", "");
    std::string why;
    const auto text = read_file(folder.path() + "/file", why);
    REQUIRE(text.has_value());
    CHECK(text->empty());
}

TEST_CASE("a long file is read to its end") {
    TemporaryFolder folder;
    for (const std::size_t size : {4095U, 4096U, 4097U, 1000000U}) {
        CAPTURE(size);
        std::string bytes;
        while (bytes.size() < size) bytes += static_cast<char>('a' + bytes.size() % 23);
        folder.write("file", bytes);
        std::string why;
        CHECK(read_file(folder.path() + "/file", why) == bytes);
    }
}

TEST_CASE("a file that does not exist cannot be read, and the reason is the system's") {
    TemporaryFolder folder;
    std::string why;
    CHECK_FALSE(read_file(folder.path() + "/nosuch.json", why).has_value());
    CHECK(why == "No such file or directory");
}

TEST_CASE("a folder cannot be read") {
    TemporaryFolder folder;
    std::string why;
    CHECK_FALSE(read_file(folder.path(), why).has_value());
    CHECK(why == "Is a directory");
}

TEST_CASE("a path through a file cannot be read") {
    TemporaryFolder folder;
    folder.write("file", "text");
    std::string why;
    CHECK_FALSE(read_file(folder.path() + "/file/inner", why).has_value());
    CHECK(why == "Not a directory");
}

TEST_CASE("the folder of a path is what stands before its last slash") {
    CHECK(folder_of("a/b.json") == "a");
    CHECK(folder_of("a/b/c.json") == "a/b");
    CHECK(folder_of("/a/b.json") == "/a");
    CHECK(folder_of("a/") == "a");
    CHECK(folder_of("./b.json") == ".");
}

TEST_CASE("a path without a folder has none, and the root is its own") {
    CHECK(folder_of("b.json").empty());
    CHECK(folder_of("").empty());
    CHECK(folder_of("/b.json") == "/");
}

TEST_CASE("paths join with one slash") {
    CHECK(join_path("a", "b.json") == "a/b.json");
    CHECK(join_path("a/", "b.json") == "a/b.json");
    CHECK(join_path("/", "b.json") == "/b.json");
    CHECK(join_path("a/b", "scripts/main.lua") == "a/b/scripts/main.lua");
}

TEST_CASE("an absolute path, or one in no folder, stays itself") {
    CHECK(join_path("a", "/etc/b.json") == "/etc/b.json");
    CHECK(join_path("", "b.json") == "b.json");
    CHECK(join_path("", "/b.json") == "/b.json");
}

TEST_CASE("taking a path apart and joining it again gives the path") {
    for (const std::string path : {"a/b.json", "/b.json", "b.json", "/a/b/c.json"}) {
        CAPTURE(path);
        CHECK(join_path(folder_of(path), path.substr(path.rfind('/') + 1)) == path);
    }
}
