#pragma once
// Whole-image operators over a rectangle in absolute coordinates: one destination,
// any number of sources. These work on three-float layouts (trFImage).

#include <vector>

#include "foundation/trColour.h"

class trImage;
class trFColVecBinaryOp;

class trImageOp {
public:
    virtual ~trImageOp();
    virtual void Render(int x, int y, int w, int h) = 0;
};

class trImageApplyOp : public trImageOp {
public:
    trImageApplyOp();
    ~trImageApplyOp() override;

    void SetDestination(trImage *image) { destination = image; }
    trImage *Destination() const { return destination; }
    // Slots grow as needed; a slot may stay null.
    void SetSource(int i, trImage const &image);
    trImage const *Source(int i) const;
    int NumSources() const { return int(sources.size()); }
    void SuggestNumThreads(int n) { suggestedThreads = n; }
    int SuggestedNumThreads() const { return suggestedThreads; }

    // True when the image has the layout this operator handles (3 channels of floats).
    virtual bool CheckImage(trImage const *image) const;

    // Runs Render over the rectangle by interleaved lines (rows, or columns with
    // byColumns) on numThreads threads. When a source is also the destination and the
    // matching copy flag is set, the result goes through a temporary first.
    void OperateThreaded(int numThreads, bool byColumns, bool copyIfColumns, bool copyIfRows, int x, int y, int w,
                         int h);

    // Copies the rectangle (absolute coordinates, clipped to both) from source to dest.
    static void CopyRectangle(trImage *dest, trImage const *source, int x, int y, int w, int h);

protected:
    trImage *destination = nullptr;
    std::vector<trImage const *> sources;
    int suggestedThreads = 1;

    // The part of the rectangle covered by the destination and every given source;
    // false when empty or when an image has the wrong layout.
    bool UsableRectangle(int &x, int &y, int &w, int &h, int numRequired) const;
};

// dest = back * backMultiplier + front * frontMultiplier.
class trImageAdd : public trImageApplyOp {
public:
    trImageAdd();
    void SetSourceBack(trImage const &image) { SetSource(0, image); }
    void SetSourceFront(trImage const &image) { SetSource(1, image); }
    void SetBackMultiplier(trFCol const &m) { backMultiplier = m; }
    void SetFrontMultiplier(trFCol const &m) { frontMultiplier = m; }
    void Render(int x, int y, int w, int h) override;

private:
    trFCol backMultiplier;
    trFCol frontMultiplier;
};

using trFColVecBinaryFunction = void (*)(trFColVec &out, trFColVec const &back, trFColVec const &front);

// dest row = op(back row, front row).
class trImageBinaryOp : public trImageApplyOp {
public:
    void SetSourceBack(trImage const &image) { SetSource(0, image); }
    void SetSourceFront(trImage const &image) { SetSource(1, image); }
    void SetOperator(trFColVecBinaryFunction function);
    void SetOperator(trFColVecBinaryOp const *op);
    void Render(int x, int y, int w, int h) override;

private:
    trFColVecBinaryFunction function = nullptr;
    trFColVecBinaryOp const *op = nullptr;
};

class trImageMultiply : public trImageBinaryOp {
public:
    trImageMultiply();
};

// Divisors are guarded away from zero, keeping their sign.
class trImageDivide : public trImageBinaryOp {
public:
    trImageDivide();
};
