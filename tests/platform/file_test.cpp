#include "kvxml/platform/internal/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace KvXmlLib16::internal {
namespace {

class File : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/kvxml_file_XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        m_directory = name;
        m_name = m_directory + "/data.bin";
    }
    void TearDown() override {
        InjectFileFault(nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(m_directory, ignored);
    }

    void Fill(const std::string& content) const { std::ofstream(m_name, std::ios::binary) << content; }
    std::string Content() const {
        std::ifstream stream(m_name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }
    static void Inject(const char* operation, int error, int after = 0) {
        const FileFault fault{operation, error, after};
        InjectFileFault(&fault);
    }

    std::string m_directory;
    std::string m_name;
};

std::string Pattern(std::size_t size) {
    std::string result(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        result[i] = static_cast<char>(i * 7 + i / 251);
    return result;
}

TEST_F(File, WritesReplaceTheFormerContent) {
    Fill(Pattern(5000));
    const std::string content = Pattern(3U << 20);
    CFile file;
    ASSERT_EQ(file.CreateForWriting(m_name.c_str()), 0);
    for (std::size_t at = 0; at < content.size(); at += 1U << 18) {
        ASSERT_EQ(file.Write(content.data() + at, 1U << 18), 0);
        file.AdviseWriteBehind();
    }
    EXPECT_EQ(file.Close(), 0);
    EXPECT_TRUE(Content() == content);
}

TEST_F(File, HostErrorsAreReported) {
    CFile file;
    EXPECT_EQ(file.OpenForReading((m_directory + "/missing").c_str()), ENOENT);
    EXPECT_EQ(file.OpenForReading(m_directory.c_str()), EISDIR);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.OpenForReading(nullptr), ENOENT);
    EXPECT_EQ(file.CreateForWriting((m_directory + "/missing/file").c_str()), ENOENT);
    EXPECT_EQ(file.CreateForWriting(m_directory.c_str()), EISDIR);
    std::size_t got = 1;
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1, got), EBADF);
    EXPECT_EQ(got, 0U);
    EXPECT_EQ(file.Write(&byte, 1), EBADF);
}

TEST_F(File, SizesBeyondFourGibibytes) {
    Fill("");
    const std::uint64_t large = (std::uint64_t{5} << 30) + 1;
    if (truncate(m_name.c_str(), static_cast<off_t>(large)) != 0) GTEST_SKIP() << "no sparse files here";
    CFile file;
    ASSERT_EQ(file.OpenForReading(m_name.c_str()), 0);
    std::uint64_t size = 0;
    EXPECT_EQ(file.GetSize(size), 0);
    EXPECT_EQ(size, large);
}

TEST_F(File, HandlesAreNotInherited) {
    Fill("x");
    CFile file;
    ASSERT_EQ(file.OpenForReading(m_name.c_str()), 0);
    bool found = false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry.path(), ignored) != m_name) continue;
        found = true;
        const int handle = std::stoi(entry.path().filename().string());
        EXPECT_NE(fcntl(handle, F_GETFD) & FD_CLOEXEC, 0);
    }
    EXPECT_TRUE(found);
}

TEST_F(File, ShortAndInterruptedTransfersAreContinued) {
    const std::string content = Pattern(1000);
    for (const int fault : {kFaultShortTransfer, EINTR}) {
        SCOPED_TRACE(fault);
        CFile file;
        Inject("open", EINTR);
        ASSERT_EQ(file.CreateForWriting(m_name.c_str()), 0);
        Inject("write", fault);
        EXPECT_EQ(file.Write(content.data(), content.size()), 0);
        EXPECT_EQ(file.Close(), 0);
        EXPECT_EQ(Content(), content);

        ASSERT_EQ(file.OpenForReading(m_name.c_str()), 0);
        Inject("read", fault);
        std::string read(2000, '\0');
        std::size_t got = 0;
        EXPECT_EQ(file.Read(read.data(), read.size(), got), 0);
        EXPECT_EQ(read.substr(0, got), content);
    }
}

TEST_F(File, InjectedFailures) {
    Fill("0123456789");
    CFile file;
    std::uint64_t size = 0;
    std::size_t got = 0;
    char buffer[4];

    Inject("open", EACCES);
    EXPECT_EQ(file.OpenForReading(m_name.c_str()), EACCES);
    EXPECT_EQ(file.CreateForWriting(m_name.c_str()), EACCES);
    InjectFileFault(nullptr);
    ASSERT_EQ(file.OpenForReading(m_name.c_str()), 0);

    Inject("size", EIO);
    EXPECT_EQ(file.GetSize(size), EIO);
    Inject("read", EIO, 1);
    EXPECT_EQ(file.Read(buffer, sizeof(buffer), got), 0);
    EXPECT_EQ(got, sizeof(buffer));
    EXPECT_EQ(file.Read(buffer, sizeof(buffer), got), EIO);
    EXPECT_EQ(got, 0U);
    Inject("read", kFaultEndOfFile);
    EXPECT_EQ(file.Read(buffer, sizeof(buffer), got), 0);
    EXPECT_EQ(got, 0U);
    InjectFileFault(nullptr);
    EXPECT_EQ(file.Read(buffer, sizeof(buffer), got), 0);
    EXPECT_EQ(std::string(buffer, got), "4567");

    ASSERT_EQ(file.CreateForWriting(m_name.c_str()), 0);
    Inject("write", ENOSPC, 1);
    EXPECT_EQ(file.Write("ab", 2), 0);
    EXPECT_EQ(file.Write("cd", 2), ENOSPC);
    Inject("close", EIO);
    EXPECT_EQ(file.Close(), EIO);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(Content(), "ab");
}

}  // namespace
}  // namespace KvXmlLib16::internal
