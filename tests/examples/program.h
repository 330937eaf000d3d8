/* SPDX-License-Identifier: MIT */
/* Runs the map's program, and looks at what it wrote. */
#ifndef TESTS_EXAMPLES_PROGRAM_H
#define TESTS_EXAMPLES_PROGRAM_H

#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/wait.h>
#include <unistd.h>

#include "colours.h"
#include "pixels.h"
#include "world.h"

struct Outcome {
    int code;
    std::string out, err;
};

class Atlas : public testing::Test {
protected:
    /* Runs a command in the scratch directory, which its output is kept out of. */
    Outcome run_command(std::vector<std::string> words)
    {
        std::vector<char *> arguments;
        for (std::string &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const pid_t child = fork();
        if (child == 0)
            become(arguments.data());
        int status = -1;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_whole(logs_ / "out"), read_whole(logs_ / "err")};
    }

    Outcome run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), ATLAS_PROGRAM);
        return run_command(std::move(arguments));
    }

    /* Runs it with arguments that must be refused with this one line, without any file made. */
    void expect_refusal(const std::vector<std::string> &arguments, const std::string &message)
    {
        const std::ptrdiff_t before = scratch_.entries();
        const Outcome outcome = run(arguments);
        EXPECT_EQ("atlas: " + message + "\n", outcome.err);
        EXPECT_EQ(1, outcome.code);
        EXPECT_EQ("", outcome.out);
        EXPECT_EQ(before, scratch_.entries());
    }

    ScratchDirectory scratch_, logs_;

private:
    [[noreturn]] void become(char **arguments)
    {
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open((logs_ / "out").c_str(), flags, 0600), STDOUT_FILENO);
        dup2(open((logs_ / "err").c_str(), flags, 0600), STDERR_FILENO);
        if (chdir(scratch_.path().c_str()) == 0)
            execvp(arguments[0], arguments);
        _exit(127);
    }
};

/* The pixels of a PNG file's contents, 3 bytes each. */
inline std::vector<png_byte> pixels_of(const std::string &png, atlas::Size size)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, png.data(), png.size())) << image.message;
    EXPECT_EQ(static_cast<png_uint_32>(size.width), image.width);
    EXPECT_EQ(static_cast<png_uint_32>(size.height), image.height);
    image.format = PNG_FORMAT_RGB;
    std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) << image.message;
    return pixels;
}

/* Those of a map's file. */
inline std::vector<png_byte> pixels_of(const std::filesystem::path &path, int width)
{
    return pixels_of(read_whole(path), {width, width / 2});
}

inline std::vector<png_byte> pixels_of(const Pixels &picture)
{
    const std::vector<mova::colour> colours = atlas::palette();
    std::vector<png_byte> pixels;
    for (const std::uint8_t ink : picture.bytes()) {
        const mova::colour &colour = colours[ink];
        for (const std::int16_t part : {colour.red, colour.green, colour.blue})
            pixels.push_back(static_cast<png_byte>(part));
    }
    return pixels;
}

#endif
