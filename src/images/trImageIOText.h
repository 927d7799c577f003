#pragma once
// Shared by the image readers and writers: message texts (trJoin) and a file handle
// closed on every way out.

#include "foundation/trJoin.h"

#include <cstdio>

// Closes a file on every way out of a reader.
class trFileCloser {
public:
    explicit trFileCloser(std::FILE *f) : file(f) {}
    ~trFileCloser()
    {
        if (file)
            std::fclose(file);
    }
    trFileCloser(trFileCloser const &) = delete;
    trFileCloser &operator=(trFileCloser const &) = delete;

private:
    std::FILE *file;
};
