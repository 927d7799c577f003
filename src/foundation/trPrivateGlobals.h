#pragma once
// Process-wide render state, built once at load: the table of spread directions,
// per-thread render records allocated up front so that no render thread allocates
// them, and the global vector of persistent materials under its mutex.

#include "foundation/trVector.h"

#include <memory>
#include <mutex>
#include <vector>

class trPersistentMaterial;
struct trThreadRenderRecord;

class trPrivateGlobals {
public:
    static constexpr int kNumDirections = 1024;

    trPrivateGlobals();
    ~trPrivateGlobals();
    trPrivateGlobals(trPrivateGlobals const &) = delete;
    trPrivateGlobals &operator=(trPrivateGlobals const &) = delete;

    // Unit vectors, the same on every run and machine; the index wraps at 1024.
    trVector const &Direction(unsigned index) const { return directions[index & (kNumDirections - 1)]; }
    trVector const *Directions() const { return directions; }

    // One record for each thread slot, trMaxThreads of them (trThreadRecord reads a row).
    trThreadRenderRecord *ThreadRecords() { return threadRecords.get(); }
    int NumThreadSlots() const { return numThreadSlots; }

    double LoadTime() const { return loadTime; }

    // Guards the material vector.
    std::mutex &Mutex() { return mutex; }
    std::vector<trPersistentMaterial *> &PersistentMaterials() { return persistentMaterials; }

    bool flagA = false;
    bool flagB = false;
    long counter = 0;

    // Builds the direction table as it is made at load, into `out` (kNumDirections entries).
    static void BuildDirections(trVector *out);

private:
    trVector directions[kNumDirections];
    std::unique_ptr<trThreadRenderRecord[]> threadRecords;
    int numThreadSlots = 0;
    double loadTime = 0;
    std::mutex mutex;
    std::vector<trPersistentMaterial *> persistentMaterials;
};

extern trPrivateGlobals trThePrivateGlobals;
