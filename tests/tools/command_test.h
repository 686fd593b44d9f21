/// Tests of the kvxml command as its users run it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/// A folder of its own for each test, in which commands run; "$K" is the program.
class CommandTest : public testing::Test {
protected:
    struct Result {
        int status;
        std::string output;
        std::string errors;
    };

    void SetUp() override {
        char folder[] = "/tmp/kvxml-test-XXXXXX";
        ASSERT_NE(mkdtemp(folder), nullptr);
        m_folder = folder;
        std::filesystem::create_directory(Path("work"));
        setenv("K", KVXML_TOOL, 1);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    static std::string Read(const std::filesystem::path& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }

    std::filesystem::path Path(const std::string& name) const { return m_folder / name; }
    std::filesystem::path File(const std::string& name) const { return m_folder / "work" / name; }
    void Save(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(File(name).parent_path());
        std::ofstream(File(name), std::ios::binary) << text;
    }
    Result Run(const std::string& command, const std::string& input = "") const {
        std::ofstream(Path("input"), std::ios::binary) << input;
        const std::string folder = m_folder.string();
        const std::string all = "cd " + folder + "/work && { " + command + "\n} <" + folder + "/input >" +
                                folder + "/output 2>" + folder + "/errors";
        const int status = std::system(all.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Read(Path("output")),
                Read(Path("errors"))};
    }

    std::filesystem::path m_folder;
};
