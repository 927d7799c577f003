// The animation members of trBase: keys on parameters, curve evaluation into the
// parameters, baking and motion file import.

#include "foundation/trMessages.h"
#include "nodes/trAnimate.h"
#include "nodes/trAnimationManager.h"
#include "nodes/trBase.h"
#include "nodes/trFile.h"
#include "nodes/trUndoData.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

void trDestroyParamAnim(trAnimate *anim)
{
    delete anim;
}

namespace {

trString Decimal(long value)
{
    trString s;
    s.SetInt(value);
    return s;
}

// Integers, reals, vectors, colours, booleans, 2-vectors and floats take keys.
bool IsAnimatableType(long type)
{
    switch (type) {
    case trParamInt:
    case trParamDouble:
    case trParamVector:
    case trParamColour:
    case trParamBool:
    case trParam2Vector:
    case trParamFloat:
        return true;
    default:
        return false;
    }
}

// The number of components a key can go on; 0 for a type that takes none.
int KeyableComponents(long type)
{
    return IsAnimatableType(type) ? int(trBase::NumParamComponentsOfType(type)) : 0;
}

// The present value, one double per component (unused ones 0).
void ReadComponents(trBase const *node, long index, long type, double out[3])
{
    out[0] = out[1] = out[2] = 0.0;
    switch (type) {
    case trParamInt: {
        long v = 0;
        node->GetParam(index, v, trWhoSystem);
        out[0] = double(v);
        break;
    }
    case trParamBool: {
        unsigned char v = 0;
        node->GetParam(index, v, trWhoSystem);
        out[0] = double(v);
        break;
    }
    case trParamDouble:
        node->GetParam(index, out[0], trWhoSystem);
        break;
    case trParamFloat: {
        float v = 0.0f;
        node->GetParam(index, v, trWhoSystem);
        out[0] = double(v);
        break;
    }
    case trParamVector: {
        trVector v;
        node->GetParam(index, v, trWhoSystem);
        out[0] = v.x;
        out[1] = v.y;
        out[2] = v.z;
        break;
    }
    case trParam2Vector: {
        tr2Vector v;
        node->GetParam(index, v, trWhoSystem);
        out[0] = v.x;
        out[1] = v.y;
        break;
    }
    case trParamColour: {
        trManRgb c;
        node->GetParam(index, c, trWhoSystem);
        out[0] = double(c.r);
        out[1] = double(c.g);
        out[2] = double(c.b);
        break;
    }
    default:
        break;
    }
}

// Writes the components in `mask` (bit per component), keeping the others, forced and
// as the system.
void WriteComponents(trBase *node, long index, long type, double const v[3], unsigned mask)
{
    switch (type) {
    case trParamInt:
        node->SetParam(index, trRoundFrame(v[0]), trWhoSystem, true);
        break;
    case trParamBool: {
        // A curve between 0 and 1 may overshoot; a boolean stays 0 or 1.
        double const rounded = std::floor(v[0] + 0.5);
        node->SetParam(index, static_cast<unsigned char>(rounded >= 1.0 ? 1 : 0), trWhoSystem, true);
        break;
    }
    case trParamDouble:
        node->SetParam(index, v[0], trWhoSystem, true);
        break;
    case trParamFloat:
        node->SetParam(index, float(v[0]), trWhoSystem, true);
        break;
    case trParamVector: {
        trVector value;
        node->GetParam(index, value, trWhoSystem);
        if (mask & 1u) value.x = v[0];
        if (mask & 2u) value.y = v[1];
        if (mask & 4u) value.z = v[2];
        node->SetParam(index, value, trWhoSystem, true);
        break;
    }
    case trParam2Vector: {
        tr2Vector value;
        node->GetParam(index, value, trWhoSystem);
        if (mask & 1u) value.x = v[0];
        if (mask & 2u) value.y = v[1];
        node->SetParam(index, value, trWhoSystem, true);
        break;
    }
    case trParamColour: {
        trManRgb value;
        node->GetParam(index, value, trWhoSystem);
        if (mask & 1u) value.r = float(v[0]);
        if (mask & 2u) value.g = float(v[1]);
        if (mask & 4u) value.b = float(v[2]);
        node->SetParam(index, value, trWhoSystem, true);
        break;
    }
    default:
        break;
    }
}

// The common path of SetParamKey and SetParamKeyWithValue: `given` holds one value per
// component, or is null to take the parameter's present value.
long KeyParam(trBase *node, long index, int component, double frame, double const *given, int notify)
{
    trParamRecord *r = node->ParamRecord(index);
    if (!r)
        return 0;
    int const numComponents = KeyableComponents(r->type);
    if (numComponents == 0 || component < -1 || component >= numComponents)
        return 0;
    if (!r->anim) {
        r->anim = new trAnimate();
        r->anim->SetUseMetaKeys(true);
    }
    long const keyFrame = trRoundFrame(frame);
    if (trUndoGenericWanted(trUndoOperationKeySet))
        trUndoGeneric(new trSetRemoveParamKeyUndoData(trUndoOperationKeySet, node, index, component,
                                                      double(keyFrame)));
    double present[3];
    if (!given) {
        ReadComponents(node, index, r->type, present);
        given = present;
    }
    int const from = component < 0 ? 0 : component;
    int const to = component < 0 ? numComponents : component + 1;
    long keyIDs[3] = {-1, -1, -1};
    long made = 0;
    for (int c = from; c < to; ++c)
        if (trAnimKey *k = r->anim->SetKey(given[c], keyFrame, c)) {
            keyIDs[c] = k->GetID();
            ++made;
        }
    if (!made)
        return 0;
    trAnimationManager *manager = trAnimationManager::Instance();
    manager->AddAnimatedParam(node, index, component);
    // Overwriting the value of a key counts as setting it: the interface redraws it.
    for (int c = from; c < to; ++c)
        if (keyIDs[c] >= 0)
            manager->KeyInserted(node, index, c, keyIDs[c]);
    if (notify)
        node->ReportParamAnimChanged(index, trWhoSystem);
    return 1;
}

bool ValidComponent(int component)
{
    return component >= 0 && component < trAnimate::kNumComponents;
}

// Reads a text file line by line into a fixed buffer. A line longer than the buffer is
// cut there; the rest of it is skipped.
class MotionLineReader {
public:
    static constexpr int kMaxLine = 1024;

    explicit MotionLineReader(char const *path) : file(path ? std::fopen(path, "r") : nullptr) {}
    ~MotionLineReader()
    {
        if (file)
            std::fclose(file);
    }
    MotionLineReader(MotionLineReader const &) = delete;
    MotionLineReader &operator=(MotionLineReader const &) = delete;

    bool IsOpen() const { return file != nullptr; }
    long LineNumber() const { return lineNumber; }

    // The next line without its end, or null at the end of the file.
    char const *Next()
    {
        if (!std::fgets(line, sizeof line, file))
            return nullptr;
        ++lineNumber;
        size_t n = std::strlen(line);
        if (n > 0 && line[n - 1] == '\n') {
            line[--n] = '\0';
        } else if (!std::feof(file)) {
            int ch;
            while ((ch = std::fgetc(file)) != EOF && ch != '\n') {
            }
        }
        if (n > 0 && line[n - 1] == '\r')
            line[n - 1] = '\0';
        return line;
    }

private:
    std::FILE *file;
    long lineNumber = 0;
    char line[kMaxLine + 2];
};

bool IsCommentField(char const *field)
{
    return field[0] == ';' || field[0] == '#' || (field[0] == '/' && field[1] == '/');
}

// Holds back the manager's state message for a bulk operation, and sends one at the end.
class StateNotificationHold {
public:
    StateNotificationHold() : wasSuspended(trAnimationManager::Instance()->SuspendStateNotifications()) {}
    ~StateNotificationHold()
    {
        if (!wasSuspended)
            trAnimationManager::Instance()->ResumeStateNotifications();
    }
    StateNotificationHold(StateNotificationHold const &) = delete;
    StateNotificationHold &operator=(StateNotificationHold const &) = delete;

private:
    bool wasSuspended;
};

} // namespace

// ---------------------------------------------------------------------------------
// Keys

long trBase::SetParamKey(long index, int component, double const &frame, int notify)
{
    return KeyParam(this, index, component, frame, nullptr, notify);
}

long trBase::SetParamKeyWithValue(long index, int component, trVector &value, double const &frame, int notify)
{
    double const given[3] = {value.x, value.y, value.z};
    return KeyParam(this, index, component, frame, given, notify);
}

long trBase::RemoveParamKey(long index, int component, double const &frame, int notify)
{
    trParamRecord *r = ParamRecord(index);
    if (!r || !r->anim || !ValidComponent(component))
        return 0;
    trAnimKey *k = r->anim->FindKeyForFrame(component, frame);
    if (!k)
        return 0;
    long const keyFrame = k->FrameInt();
    long const id = k->GetID();
    if (trUndoGenericWanted(trUndoOperationKeyRemoved))
        trUndoGeneric(new trSetRemoveParamKeyUndoData(trUndoOperationKeyRemoved, this, index, component,
                                                      double(keyFrame)));
    r->anim->RemoveKey(keyFrame, component);
    trAnimationManager *manager = trAnimationManager::Instance();
    manager->KeyRemoved(this, index, component, id);
    // The curves stay (they hold the modes), but a parameter without keys isn't animated.
    if (!r->anim->HasKeys())
        manager->RemoveAnimatedParam(this, index);
    if (notify)
        ReportParamAnimChanged(index, trWhoSystem);
    return 1;
}

long trBase::RemoveParamKey(long index, int component)
{
    trParamRecord *r = ParamRecord(index);
    if (!r || !r->anim || !ValidComponent(component))
        return 0;
    std::vector<trAnimKey *> keys;
    for (trAnimKey *k = r->anim->FirstKey(component); k; k = k->Next())
        keys.push_back(k);
    if (keys.empty())
        return 0;
    StateNotificationHold hold;
    // Key by key, so that the host's undo and interface see each one go.
    for (trAnimKey *k : keys)
        RemoveParamKey(index, component, k->Frame(), 0);
    ReportParamAnimChanged(index, trWhoSystem);
    return 1;
}

long trBase::SetParamKeyIfKeyedAtCurrentFrame(long index)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r || !r->anim)
        return 0;
    double const frame = GetCurrentFrame();
    bool keyed = false;
    for (int c = 0; c < trAnimate::kNumComponents && !keyed; ++c)
        keyed = IsParamKeyedAtFrame(index, c, frame, 1.0);
    if (!keyed)
        return 0;
    return SetParamKey(index, -1, frame, 1);
}

long trBase::SetParamKeyIfAnimated(long index)
{
    if (!IsParamAnimated(index))
        return 0;
    SetParamKey(index, -1, GetCurrentFrame(), 1);
    return 1;
}

long trBase::SetParamKeyIfPreferred(long)
{
    return 1;
}

int trBase::GetParamComponentInterpolationMode(long index, int component)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r || !r->anim)
        return trAnimationInterpolationNone;
    return r->anim->GetComponentInterpolationMode(component);
}

long trBase::SetParamComponentInterpolationMode(long index, int component, int mode)
{
    trParamRecord *r = ParamRecord(index);
    if (!r || !IsAnimatableType(r->type) || !ValidComponent(component) ||
        (mode != trAnimationInterpolationTCB && mode != trAnimationInterpolationLinear))
        return 0;
    if (trUndoGenericWanted(trUndoOperationInterpolationModeChanged))
        trUndoGeneric(new trChangeAnimInterpolationModeUndoData(
            this, index, component, r->anim ? r->anim->GetComponentInterpolationMode(component) : 0));
    if (!r->anim) {
        r->anim = new trAnimate();
        r->anim->SetUseMetaKeys(true);
    }
    r->anim->SetComponentInterpolationMode(component, mode);
    trAnimationManager::Instance()->InterpolationModeChanged(this, index, component, mode);
    return 1;
}

// A key counts when it stands less than `tolerance` from the frame (or exactly on it),
// so that with a tolerance of 1 the neighbouring whole frames don't count.
bool trBase::IsParamKeyedAtFrame(long index, int component, double const &frame, double const &tolerance)
{
    trAnimate const *anim = ParamAnim(index);
    if (!anim || !ValidComponent(component))
        return false;
    for (trAnimKey const *k = anim->FirstKey(component); k; k = k->Next()) {
        double const distance = std::fabs(k->Frame() - frame);
        if (distance < tolerance || distance == 0.0)
            return true;
    }
    return false;
}

bool trBase::IsParamAnimated(long index)
{
    trAnimate const *anim = ParamAnim(index);
    return anim && anim->HasKeys();
}

bool trBase::IsParamComponentAnimated(long index, int component)
{
    trAnimate const *anim = ParamAnim(index);
    return anim && anim->NumKeys(component) > 0;
}

long trBase::DeleteParamAnim(long index)
{
    trParamRecord *r = ParamRecord(index);
    if (!r)
        return 0;
    if (trUndoGenericWanted(trUndoOperationParamAnimDeleted))
        trUndoGeneric(new trReadParamFileDeleteParamAnimUndoData(trUndoOperationParamAnimDeleted, this, {index}));
    trDestroyParamAnim(r->anim);
    r->anim = nullptr;
    trAnimationManager::Instance()->RemoveAnimatedParam(this, index);
    return 1;
}

void trBase::ReportParamAnimChanged(long index, trBase *who)
{
    if (trParamReport *report = ParamReport())
        report->OnObjectParamAnimChanged(this, index, who);
}

// ---------------------------------------------------------------------------------
// Evaluation

long trBase::UpdateParamFromAnim(long index, double const &frame)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r)
        return 0;
    unsigned char const guard = AnimUpdateGuard();
    SetAnimUpdateGuard(0);
    long done = 0;
    trAnimate const *anim = r->anim;
    if (anim && anim->HasKeys() && IsAnimatableType(r->type)) {
        double values[3] = {0.0, 0.0, 0.0};
        unsigned mask = 0;
        for (int c = 0; c < trAnimate::kNumComponents; ++c)
            if (anim->NumKeys(c) > 0) {
                values[c] = anim->GetValue(frame, c);
                mask |= 1u << c;
            }
        WriteComponents(this, index, r->type, values, mask);
        done = 1;
    } else if (r->type == trParamFile) {
        // A numbered file sequence names another file on each frame.
        trFile const *file = static_cast<trFile const *>(r->storage);
        if (!file->IsNodeLink()) {
            trString const &text = file->FileStringR();
            if (text.WithFrameNumber(trRoundFrame(std::floor(frame))) != text) {
                CallParamChanged(index, trWhoSystem, false);
                done = 1;
            }
        }
    }
    SetAnimUpdateGuard(guard);
    return done;
}

long trBase::UpdateAllFromAnim(double const &frame)
{
    long count = 0;
    for (long i = 0, n = NumParams(); i < n; ++i)
        count += UpdateParamFromAnim(i, frame);
    for (long i = 0, n = NumChildren(); i < n; ++i)
        count += Child(i)->UpdateAllFromAnim(frame);
    return count;
}

long trBase::BakeAnimation(long first, long last, bool withChildren)
{
    if (first > last)
        return 0;
    // One key a frame: a range beyond this is surely a mistake, and would exhaust memory.
    constexpr long kMaxBakeFrames = 10000000;
    if (double(last) - double(first) >= double(kMaxBakeFrames)) {
        trError(trString("BakeAnimation: Too many frames to bake: ") + Decimal(first) + " to " + Decimal(last));
        return 0;
    }
    StateNotificationHold hold;
    long baked = 0;
    for (long index = 0, n = NumParams(); index < n; ++index) {
        trParamRecord const *r = ParamRecord(index);
        if (!r->anim || !r->anim->HasKeys() || !IsAnimatableType(r->type))
            continue;
        // Evaluate the whole range first: every key set changes the curve.
        long const numFrames = last - first + 1;
        std::vector<double> values[trAnimate::kNumComponents];
        for (int c = 0; c < trAnimate::kNumComponents; ++c) {
            if (r->anim->NumKeys(c) == 0)
                continue;
            values[c].resize(size_t(numFrames));
            trAnimKey *before = nullptr;
            for (long f = 0; f < numFrames; ++f)
                values[c][size_t(f)] = r->anim->GetValue(double(first + f), c, &before, nullptr, before);
        }
        for (int c = 0; c < trAnimate::kNumComponents; ++c) {
            for (size_t f = 0; f < values[c].size(); ++f) {
                double given[3] = {0.0, 0.0, 0.0};
                given[c] = values[c][f];
                KeyParam(this, index, c, double(first + long(f)), given, 0);
            }
        }
        ReportParamAnimChanged(index, trWhoSystem);
        ++baked;
    }
    if (withChildren)
        for (long i = 0, n = NumChildren(); i < n; ++i)
            baked += Child(i)->BakeAnimation(first, last, true);
    return baked;
}

// ---------------------------------------------------------------------------------
// Motion files

long trBase::ReadParamFile(long index, char const *path)
{
    MotionLineReader reader(path);
    if (!reader.IsOpen()) {
        trError(trString("ReadParamFile: Cannot open file: \"") + (path ? path : "") + "\"");
        return 0;
    }
    trParamRecord const *r = ParamRecord(index);
    if (!r) {
        trError(trString("ReadParamFile: Parameter index out of range: ") + Decimal(index));
        return 0;
    }
    if (!IsAnimatableType(r->type)) {
        trError(trString("ReadParamFile: Parameter \"") + r->name + "\" can't be animated, in class: " +
                RegisteredClassName());
        return 0;
    }
    StateNotificationHold hold;
    if (trUndoGenericWanted(trUndoOperationMotionFileRead))
        trUndoGeneric(new trReadParamFileDeleteParamAnimUndoData(trUndoOperationMotionFileRead, this, {index}));
    DeleteParamAnim(index);
    UpdateParamFromAnim(index, GetCurrentFrame());

    long count = 0;
    char fields[4][MotionLineReader::kMaxLine + 2];
    while (char const *line = reader.Next()) {
        int const n = std::sscanf(line, "%s %s %s %s", fields[0], fields[1], fields[2], fields[3]);
        if (n <= 0 || IsCommentField(fields[0]))
            continue;
        double const frame = std::atof(fields[0]);
        trString value;
        for (int i = 1; i < n; ++i) {
            if (i > 1)
                value += " ";
            value += fields[i];
        }
        if (!SetParamFromString(index, value, this)) {
            // The console gets where; the host the message its users know.
            trOutWarning(trString("ReadParamFile: Line ") + Decimal(reader.LineNumber()) + " of \"" + path +
                         "\" is not a frame and a value of parameter \"" + r->name + "\": \"" + line + "\"");
            trWarning("ReadParamFile: Bad formatting in motion file");
            return 0;
        }
        count += SetParamKey(index, -1, frame, 1);
    }
    if (count == 0) {
        trWarning("ReadParamFile: No valid key frames were found in motion file");
        return 0;
    }
    UpdateParamFromAnim(index, GetCurrentFrame());
    trInfoMsg(trString("ReadParamFile: Successfully imported ") + Decimal(count) + " key frames");
    return 1;
}
