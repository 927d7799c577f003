#include "foundation/trRotation.h"

#include <cmath>
#include <cstdio>

#include "foundation/trMessages.h"

char const *const trEulerOrderLabel[12] = {
    "XYZ", "XZY", "YXZ", "YZX", "ZXY (Nuke default)", "ZYX", "PHB", "PBH", "HPB", "HBP", "BPH", "BHP",
};

namespace {

// The axes of orders 0..5 in the order they are applied.
const int kOrderAxes[6][3] = {
    {0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0},
};

// Orders 6..11 are 0..5 under their pitch, heading and bank names. An order out
// of range is reported, naming the operation, and taken as XYZ.
int BaseOrder(int order, char const *operation)
{
    if (order >= 0 && order < 6)
        return order;
    if (order >= 6 && order < trRotation::NumEulerOrders)
        return order - 6;
    char text[160];
    std::snprintf(text, sizeof text, "%s: unknown Euler order %d, using XYZ", operation, order);
    trError(text);
    return 0;
}

trMatrix4x4<double> AxisMatrix(int axis, double angle)
{
    if (axis == 0)
        return trMatrix4x4<double>::RotationX(angle);
    if (axis == 1)
        return trMatrix4x4<double>::RotationY(angle);
    return trMatrix4x4<double>::RotationZ(angle);
}

// The product of the turns of a base order, angles as given (no handedness).
trMatrix4x4<double> BuildMatrix(trVector const &a, int baseOrder)
{
    int const *axes = kOrderAxes[baseOrder];
    return AxisMatrix(axes[2], a(axes[2])) * AxisMatrix(axes[1], a(axes[1])) * AxisMatrix(axes[0], a(axes[0]));
}

// The inverse of BuildMatrix for a pure rotation matrix. With the turns applied
// about i, then j, then k, M = Rk(c) Rj(b) Ri(a); an odd permutation of the axes
// flips the signs of the off-diagonal terms used. At gimbal lock (cos b near 0)
// only a + c or a - c is defined: c is set to 0.
trVector DecomposeMatrix(trMatrix4x4<double> const &m, int baseOrder)
{
    int const *axes = kOrderAxes[baseOrder];
    int i = axes[0], j = axes[1], k = axes[2];
    bool even = (baseOrder == 0 || baseOrder == 3 || baseOrder == 4);
    double s = even ? 1.0 : -1.0;

    double cb = std::hypot(m.m[i][i], m.m[j][i]);
    double a, b, c;
    b = std::atan2(-s * m.m[k][i], cb);
    if (cb > 1e-10) {
        a = std::atan2(s * m.m[k][j], m.m[k][k]);
        c = std::atan2(s * m.m[j][i], m.m[i][i]);
    } else {
        a = std::atan2(-s * m.m[j][k], m.m[j][j]);
        c = 0.0;
    }
    trVector result;
    result(i) = a;
    result(j) = b;
    result(k) = c;
    return result;
}

trQuaternion AxisQuaternion(int axis, double angle)
{
    double h = 0.5 * angle;
    double s = std::sin(h);
    return trQuaternion(std::cos(h), axis == 0 ? s : 0.0, axis == 1 ? s : 0.0, axis == 2 ? s : 0.0);
}

// Angles in the library's left-handed frame.
trVector LeftHandedAngles(trRotation const &r)
{
    if (r.handedness == trRotation::RightHanded)
        return trVector(-r.angles.x, -r.angles.y, r.angles.z);
    return r.angles;
}

bool Near(double a, double b) { return std::fabs(b - a) <= std::fabs(a) * 1e-12; }

} // namespace

void trQuaternion::SetAxisAngle(trVector const &axis, double angle)
{
    double h = 0.5 * angle;
    trVector v = axis.Normalized() * std::sin(h);
    Set(std::cos(h), v.x, v.y, v.z);
}

bool trQuaternion::NearlyEquals(trQuaternion const &o) const
{
    return Near(w, o.w) && Near(x, o.x) && Near(y, o.y) && Near(z, o.z);
}

trTransform<double> trRotation::GetTransform() const
{
    trMatrix4x4<double> m = BuildMatrix(LeftHandedAngles(*this), BaseOrder(order, "trRotation::GetTransform"));
    // A rotation's inverse is its transpose.
    return trTransform<double>(m, m.Transpose());
}

trQuaternion trRotation::GetQuaternion() const
{
    int const *axes = kOrderAxes[BaseOrder(order, "trRotation::GetQuaternion")];
    trVector a = LeftHandedAngles(*this);
    return AxisQuaternion(axes[2], a(axes[2])) * AxisQuaternion(axes[1], a(axes[1])) *
           AxisQuaternion(axes[0], a(axes[0]));
}

void trRotation::ConvertOrderTo(int target)
{
    int base = BaseOrder(order, "trRotation::ConvertOrder");
    if (base != target)
        angles = DecomposeMatrix(BuildMatrix(angles, base), target);
    order = target;
}

void trRotation::ConvertOrderToXYZ() { ConvertOrderTo(XYZ); }

void trRotation::ConvertOrderToZXY() { ConvertOrderTo(ZXY); }

void trRotation::ConvertOrderToNative()
{
    order = BaseOrder(order, "trRotation::ConvertOrderToNative") + 6;
}

void trRotation::ConvertToLeftHanded()
{
    if (handedness == LeftHanded)
        return;
    angles.x = -angles.x;
    angles.y = -angles.y;
    handedness = LeftHanded;
}

void trRotation::ConvertToRightHanded()
{
    if (handedness == RightHanded)
        return;
    angles.x = -angles.x;
    angles.y = -angles.y;
    handedness = RightHanded;
}

bool trRotation::NearlyEquals(trRotation const &o) const
{
    return order == o.order && handedness == o.handedness && angles.NearlyEquals(o.angles);
}

bool trRotation::operator<(trRotation const &o) const
{
    if (order != o.order)
        return order < o.order;
    if (handedness != o.handedness)
        return handedness < o.handedness;
    if (angles.x != o.angles.x)
        return angles.x < o.angles.x;
    if (angles.y != o.angles.y)
        return angles.y < o.angles.y;
    return angles.z < o.angles.z;
}
