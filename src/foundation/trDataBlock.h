#pragma once
// Owns one byte array, shared by its copies: blobs of project files and encoded
// images travel through memory in it.

#include <memory>

class trDataBlock {
public:
    trDataBlock() = default;
    unsigned char *Data() const { return block.get(); }
    // Takes over an array made with new unsigned char[]; the old one goes when its last
    // holder lets go. Null empties the handle.
    void Reset(unsigned char *data = nullptr) { block.reset(data); }

private:
    std::shared_ptr<unsigned char[]> block;
};
