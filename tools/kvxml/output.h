/// Where a converted document goes: a file, a device, a pipe or standard output, compressed on request.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// A failure that is reported in one line with the name of the file that it is about.
class CFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    /// What was attempted, if that needs saying, and the host's text for the error number.
    CFailure(const std::string& attempt, int error);
};

/// Bytes that appear at their target all at once, in `Commit`, or not at all.
///
/// A regular file is written under a temporary name beside its target, which is then replaced and keeps its
/// permissions; symbolic links stay, and what they point to is replaced. The temporary file is removed when
/// the output is destroyed before that, and by SIGINT, SIGTERM and SIGHUP. What goes to a device, a pipe or
/// an open descriptor is held in memory until `Commit`.
class COutput {
public:
    /// `name` "-" is standard output. CFailure when the target cannot be written, as far as this can be
    /// known beforehand. At most one output exists at a time.
    COutput(const std::string& name, bool gzip);
    COutput(const COutput&) = delete;
    COutput& operator=(const COutput&) = delete;
    ~COutput();

    void Write(std::string_view bytes);
    /// Finishes compression, writes what is left, and puts the file in its place.
    void Commit();

private:
    struct CCompressor;

    void Locate(const std::string& name);
    void CreateTemporary(const struct stat* existing);
    void KeepPermissions(const struct stat& existing);
    void Store(std::string_view bytes);
    void WriteHeld();
    void CloseHandle();

    std::string m_target;
    std::string m_temporary;  // empty: there is none
    int m_handle = -1;
    bool m_ownsHandle = false;
    std::vector<std::string> m_held;  // for targets that are not regular files
    std::unique_ptr<CCompressor> m_compressor;
};

/// Sets up signals and descriptors of the process: fatal signals remove the temporary file; closed pipes and
/// exceeded file sizes are failures of writing; standard descriptors that are closed are not reused.
void PrepareProcess();

}  // namespace tool
