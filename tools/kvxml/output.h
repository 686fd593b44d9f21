/// Where a converted document goes: a file, a device, a pipe or standard output, compressed on request.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>

namespace tool {

/// "standard output" or the name, as messages call it.
std::string OutputName(const std::string& name);

/// The bytes of a document on their way to a file, or to what is none.
///
/// A regular file appears all at once, in `Commit`, or not at all: it is written under a temporary name
/// beside its target, which is then replaced and keeps its permissions; symbolic links stay, and what they
/// point to is replaced. The temporary file is removed when the output is destroyed before that, and by
/// signals that end the process. What goes to a device, a pipe or an open descriptor is written as it comes.
class COutput {
public:
    /// `name` "-" is standard output. CFailure when the target cannot be written, as far as this can be
    /// known beforehand. At most one output exists at a time.
    COutput(const std::string& name, bool gzip);
    COutput(const COutput&) = delete;
    COutput& operator=(const COutput&) = delete;
    ~COutput();

    /// CFailure when they cannot be written.
    void Write(std::string_view bytes);
    /// Finishes compression, and puts the file in its place once it is on the disk.
    void Commit();

    /// Whether people read along.
    bool IsTerminal() const;
    /// After `Commit`: what the file has not kept of the one that it has replaced; empty when there is
    /// nothing.
    const std::string& GetRemark() const noexcept { return m_remark; }

private:
    struct CCompressor;

    void Locate(const std::string& name);
    void CreateTemporary();
    void Open();
    void KeepPermissions();
    void Synchronize() const;
    void CloseHandle();

    std::string m_target;
    std::string m_temporary;  // empty: there is none
    int m_handle = -1;
    bool m_ownsHandle = false;
    bool m_replaces = false;
    struct stat m_existing {};  // of what is replaced
    std::string m_remark;
    std::unique_ptr<CCompressor> m_compressor;
};

/// Sets up signals and descriptors of the process: fatal signals remove the temporary file; closed pipes and
/// exceeded file sizes are failures of writing; standard descriptors that are closed are not reused.
void PrepareProcess();

}  // namespace tool
