/* SPDX-License-Identifier: MIT */
#include "tiles.h"

#include <filesystem>

namespace atlas {

std::string as_html(std::string_view text)
{
    std::string html;
    for (const char letter : printable(text))
        html += letter == '&' || letter == '<' || letter == '"' ? "&#" + std::to_string(letter) + ";"
                                                                : std::string(1, letter);
    return html;
}

/* Writes a file, and makes the directories that it lies in. */
static void write(const std::filesystem::path &path, std::span<const std::uint8_t> contents)
{
    std::error_code failure;
    std::filesystem::create_directories(path.parent_path(), failure);
    if (failure)
        throw Error("cannot be written: " + failure.message());
    replace_file(path, contents);
}

Page::Page(const std::string &name, const Legend &legend) : directory_(name, Replacement::directory)
{
    for (const auto &[path, shipped] : page_files) {
        std::string text(shipped);
        for (const auto &[word, meant] : {std::pair<std::string_view, std::string>("{title}", as_html(legend.title)),
                                          {"{attribution}", as_html(legend.attribution)},
                                          {"{zoom}", std::to_string(legend.zoom)}}) {
            for (std::size_t at = 0; (at = text.find(word, at)) != text.npos; at += meant.size())
                text.replace(at, word.size(), meant);
        }
        write(directory_.path() + "/" + path, {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
    }
}

void Page::put(const Place &place, std::span<const std::uint8_t> png)
{
    write(directory_.path() + "/tiles/" + std::to_string(place.zoom) + "/" + std::to_string(place.column) + "/" +
              std::to_string(place.row) + ".png",
          png);
}

} // namespace atlas
