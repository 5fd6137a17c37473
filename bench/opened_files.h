#ifndef PHOTOLIB_BENCH_OPENED_FILES_H
#define PHOTOLIB_BENCH_OPENED_FILES_H

#include <string>
#include <vector>

/// Counts how often files in some folders are opened, by whatever process, while it lives. Exits
/// the program with a message when the kernel does not tell.
class OpenedFiles
{
public:
    /// Of the files right in `folders`.
    explicit OpenedFiles(const std::vector<std::string> &folders);
    ~OpenedFiles();

    OpenedFiles(const OpenedFiles &) = delete;
    OpenedFiles &operator=(const OpenedFiles &) = delete;

    /// Openings since the last call; listing a folder is none.
    int count();

private:
    int m_fd;
};

#endif // PHOTOLIB_BENCH_OPENED_FILES_H
