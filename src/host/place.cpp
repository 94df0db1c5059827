// place.cpp: writes JSON paths.
#include "place.h"

#include <algorithm>

#include "wording.h"

namespace kelhost {

namespace {

// Longer names are cut like every quoted text, so that a hostile file cannot make messages of any length.
constexpr std::size_t longest_plain_name = 60;

bool reads_plain(std::string_view name) {
    return !name.empty() && name.size() <= longest_plain_name
           && std::all_of(name.begin(), name.end(), [](char character) {
                  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
                         || (character >= '0' && character <= '9') || character == '_' || character == '$';
              });
}

} // namespace

std::string Place::path() const {
    if (above_ == nullptr) return "$";
    const std::string above = above_->path();
    if (is_item_) return above + '[' + std::to_string(index_) + ']';
    if (reads_plain(name_)) return above + '.' + std::string(name_);
    return above + '[' + quoted(name_) + ']';
}

} // namespace kelhost
