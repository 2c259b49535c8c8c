/** A stdio stream that is closed at the end of its scope, and close-on-exec. */
#ifndef MOVO_NET_SUPPORT_FILE_H
#define MOVO_NET_SUPPORT_FILE_H

#include <cstdio>

namespace movonet {
class UniqueFile {
public:
    /** `mode` as for fopen with the letter e: "re", "we". */
    UniqueFile(const char* path, const char* mode) : m_file(std::fopen(path, mode)) {}
    explicit UniqueFile(std::FILE* file) : m_file(file) {}
    UniqueFile(const UniqueFile&) = delete;
    UniqueFile& operator=(const UniqueFile&) = delete;
    ~UniqueFile()
    {
        if (m_file != nullptr) {
            (void)std::fclose(m_file);
        }
    }

    explicit operator bool() const { return m_file != nullptr; }
    std::FILE* get() const { return m_file; }

private:
    std::FILE* m_file;
};
} // namespace movonet

#endif
