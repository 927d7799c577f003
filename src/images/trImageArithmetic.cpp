// Plain whole-image operators: add with multipliers, and row-wise binary operations.
#include "images/trImageArithmetic.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "foundation/trColourFilters.h"
#include "foundation/trMessages.h"
#include "foundation/trVector.h"
#include "images/trImage.h"

trImageOp::~trImageOp() = default;

trImageApplyOp::trImageApplyOp() = default;
trImageApplyOp::~trImageApplyOp() = default;

void trImageApplyOp::SetSource(int i, trImage const &image)
{
    if (i < 0)
        return;
    if (std::size_t(i) >= sources.size())
        sources.resize(std::size_t(i) + 1, nullptr);
    sources[std::size_t(i)] = &image;
}

trImage const *trImageApplyOp::Source(int i) const
{
    return i >= 0 && std::size_t(i) < sources.size() ? sources[std::size_t(i)] : nullptr;
}

bool trImageApplyOp::CheckImage(trImage const *image) const
{
    return image && image->Pixels() && image->NumChannels() == 3 && image->BytesPerChannel() == 4;
}

bool trImageApplyOp::UsableRectangle(int &x, int &y, int &w, int &h, int numRequired) const
{
    if (!CheckImage(destination))
        return false;
    int x0 = std::max(x, destination->OffsetX());
    int y0 = std::max(y, destination->OffsetY());
    int x1 = std::min(x + w, destination->EndX());
    int y1 = std::min(y + h, destination->EndY());
    for (int i = 0; i < numRequired; ++i) {
        trImage const *s = Source(i);
        if (!CheckImage(s))
            return false;
        x0 = std::max(x0, s->OffsetX());
        y0 = std::max(y0, s->OffsetY());
        x1 = std::min(x1, s->EndX());
        y1 = std::min(y1, s->EndY());
    }
    if (x0 >= x1 || y0 >= y1)
        return false;
    x = x0;
    y = y0;
    w = x1 - x0;
    h = y1 - y0;
    return true;
}

void trImageApplyOp::CopyRectangle(trImage *dest, trImage const *source, int x, int y, int w, int h)
{
    if (!dest || !source || !dest->Pixels() || !source->Pixels() ||
        dest->BytesPerPixel() != source->BytesPerPixel())
        return;
    int x0 = std::max({x, dest->OffsetX(), source->OffsetX()});
    int y0 = std::max({y, dest->OffsetY(), source->OffsetY()});
    int x1 = std::min({x + w, dest->EndX(), source->EndX()});
    int y1 = std::min({y + h, dest->EndY(), source->EndY()});
    if (x0 >= x1 || y0 >= y1)
        return;
    std::size_t bytes = std::size_t(x1 - x0) * std::size_t(dest->BytesPerPixel());
    for (int row = y0; row < y1; ++row)
        std::memmove(dest->PixelOffset(x0, row), source->PixelOffset(x0, row), bytes);
}

void trImageApplyOp::OperateThreaded(int numThreads, bool byColumns, bool copyIfColumns, bool copyIfRows, int x,
                                     int y, int w, int h)
{
    if (w <= 0 || h <= 0 || !destination)
        return;
    numThreads = std::max(1, numThreads);
    trImage *realDestination = destination;
    trImage temp;
    bool copy = byColumns ? copyIfColumns : copyIfRows;
    bool aliased = std::find(sources.begin(), sources.end(), realDestination) != sources.end();
    if (copy && aliased) {
        if (!temp.Init(x, y, w, h, realDestination->NumChannels(), realDestination->BytesPerChannel(),
                       realDestination->IsSigned()))
            return;
        destination = &temp;
    }
    int lines = byColumns ? w : h;
    auto work = [&](int t) {
        for (int line = t; line < lines; line += numThreads) {
            if (byColumns)
                Render(x + line, y, 1, h);
            else
                Render(x, y + line, w, 1);
        }
    };
    if (numThreads == 1) {
        work(0);
    } else {
        std::vector<std::thread> threads;
        threads.reserve(std::size_t(numThreads));
        for (int t = 0; t < numThreads; ++t) {
            try {
                threads.emplace_back(work, t);
            } catch (...) {
                trError("trImageApplyOp: unable to start a thread");
                work(t);
            }
        }
        for (auto &thread : threads)
            thread.join();
    }
    if (destination == &temp) {
        destination = realDestination;
        CopyRectangle(realDestination, &temp, x, y, w, h);
    }
}

// ---------------------------------------------------------------------------

trImageAdd::trImageAdd() : backMultiplier(1.0f, 1.0f, 1.0f), frontMultiplier(1.0f, 1.0f, 1.0f) {}

namespace {

inline bool IsOne(trFCol const &c)
{
    return c.r == 1.0f && c.g == 1.0f && c.b == 1.0f;
}

inline bool IsZero(trFCol const &c)
{
    return c.r == 0.0f && c.g == 0.0f && c.b == 0.0f;
}

} // namespace

void trImageAdd::Render(int x, int y, int w, int h)
{
    if (!UsableRectangle(x, y, w, h, 2))
        return;
    trImage const *back = Source(0);
    trImage const *front = Source(1);
    bool backOne = IsOne(backMultiplier), frontOne = IsOne(frontMultiplier);
    bool backZero = IsZero(backMultiplier), frontZero = IsZero(frontMultiplier);
    for (int row = y; row < y + h; ++row) {
        trFCol *d = reinterpret_cast<trFCol *>(destination->PixelOffset(x, row));
        trFCol const *b = reinterpret_cast<trFCol const *>(back->PixelOffset(x, row));
        trFCol const *f = reinterpret_cast<trFCol const *>(front->PixelOffset(x, row));
        if (backOne && frontOne) {
            for (int i = 0; i < w; ++i)
                d[i] = trFCol(b[i].r + f[i].r, b[i].g + f[i].g, b[i].b + f[i].b);
        } else if (backZero && frontZero) {
            for (int i = 0; i < w; ++i)
                d[i] = trFCol(0.0f, 0.0f, 0.0f);
        } else if (backOne) {
            for (int i = 0; i < w; ++i)
                d[i] = trFCol(b[i].r + f[i].r * frontMultiplier.r, b[i].g + f[i].g * frontMultiplier.g,
                              b[i].b + f[i].b * frontMultiplier.b);
        } else {
            for (int i = 0; i < w; ++i)
                d[i] = trFCol(b[i].r * backMultiplier.r + f[i].r * frontMultiplier.r,
                              b[i].g * backMultiplier.g + f[i].g * frontMultiplier.g,
                              b[i].b * backMultiplier.b + f[i].b * frontMultiplier.b);
        }
    }
}

// ---------------------------------------------------------------------------

void trImageBinaryOp::SetOperator(trFColVecBinaryFunction f)
{
    function = f;
    op = nullptr;
}

void trImageBinaryOp::SetOperator(trFColVecBinaryOp const *o)
{
    op = o;
    function = nullptr;
}

void trImageBinaryOp::Render(int x, int y, int w, int h)
{
    if ((!function && !op) || !UsableRectangle(x, y, w, h, 2))
        return;
    trImage const *back = Source(0);
    trImage const *front = Source(1);
    for (int row = y; row < y + h; ++row) {
        trFColVec d(reinterpret_cast<trFCol *>(destination->PixelOffset(x, row)), w);
        // The row wrappers are read-only here; trFColVec simply has no const form.
        trFColVec const b(reinterpret_cast<trFCol *>(const_cast<unsigned char *>(back->PixelOffset(x, row))), w);
        trFColVec const f(reinterpret_cast<trFCol *>(const_cast<unsigned char *>(front->PixelOffset(x, row))), w);
        if (function)
            function(d, b, f);
        else
            (*op)(d, b, f);
    }
}

namespace {

void MultiplyRows(trFColVec &out, trFColVec const &a, trFColVec const &b)
{
    long n = std::min({out.count, a.count, b.count});
    for (long i = 0; i < n; ++i) {
        trFCol const &p = a.cols[i];
        trFCol const &q = b.cols[i];
        out.cols[i] = trFCol(p.r * q.r, p.g * q.g, p.b * q.b);
    }
}

void DivideRows(trFColVec &out, trFColVec const &a, trFColVec const &b)
{
    long n = std::min({out.count, a.count, b.count});
    for (long i = 0; i < n; ++i) {
        trFCol const &p = a.cols[i];
        trFCol const &q = b.cols[i];
        out.cols[i] = trFCol(p.r / trGuardedDivisor(q.r), p.g / trGuardedDivisor(q.g), p.b / trGuardedDivisor(q.b));
    }
}

} // namespace

trImageMultiply::trImageMultiply()
{
    SetOperator(&MultiplyRows);
}

trImageDivide::trImageDivide()
{
    SetOperator(&DivideRows);
}
