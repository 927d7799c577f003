#pragma once
// A render state's cache of the sky as seen from the scene, filled tile by tile on
// demand under its locks. The cube faces, their mip levels and the tile locks come
// with the indirect lighting; for now it is the mutex that guards them.

#include <mutex>

class trSkyCache {
public:
    std::mutex Mutex;
};
