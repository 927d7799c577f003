#pragma once

// Euler rotations and quaternions.

#include "foundation/trTransform.h"
#include "foundation/trVector.h"

// Names of the twelve Euler orders, indexed by trRotation::EulerOrder.
extern char const *const trEulerOrderLabel[12];

class trQuaternion
{
public:
    double w, x, y, z;  // w first

    trQuaternion() : w(1.0), x(0.0), y(0.0), z(0.0) {}
    trQuaternion(double aw, double ax, double ay, double az) : w(aw), x(ax), y(ay), z(az) {}

    void Set(double aw, double ax, double ay, double az) { w = aw; x = ax; y = ay; z = az; }
    // w = cos(angle / 2), vector part the normalised axis times sin(angle / 2).
    // The axis is normalised with the vector guard, so a zero axis gives a zero
    // vector part.
    void SetAxisAngle(trVector const &axis, double angle);

    trQuaternion Conjugate() const { return trQuaternion(w, -x, -y, -z); }
    // The Hamilton product: as rotations, o is applied first.
    trQuaternion operator*(trQuaternion const &o) const
    {
        return trQuaternion(w * o.w - x * o.x - y * o.y - z * o.z, w * o.x + x * o.w + y * o.z - z * o.y,
                            w * o.y - x * o.z + y * o.w + z * o.x, w * o.z + x * o.y - y * o.x + z * o.w);
    }
    trQuaternion operator+(trQuaternion const &o) const { return trQuaternion(w + o.w, x + o.x, y + o.y, z + o.z); }
    trQuaternion &operator+=(trQuaternion const &o)
    {
        w += o.w;
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    // 0 is w, 1 x, 2 y, anything else z.
    double &operator()(int i) { return i == 0 ? w : (i == 1 ? x : (i == 2 ? y : z)); }
    double operator()(int i) const { return i == 0 ? w : (i == 1 ? x : (i == 2 ? y : z)); }

    // |this - o| at most |this| * 1e-12 per component, as trVector::NearlyEquals.
    bool NearlyEquals(trQuaternion const &o) const;

    bool operator==(trQuaternion const &o) const { return w == o.w && x == o.x && y == o.y && z == o.z; }
    bool operator!=(trQuaternion const &o) const { return !(*this == o); }
};

// Three angles in radians (about x, y and z), the order in which the three turns
// are applied, and the handedness of the frame the angles belong to.
class trRotation
{
public:
    // The order of application: XYZ turns about x first, then y, then z.
    // P, H and B are pitch about x, heading about y and bank about z: orders 6 to
    // 11 build the same products as 0 to 5.
    enum EulerOrder : int {
        XYZ = 0, XZY = 1, YXZ = 2, YZX = 3, ZXY = 4, ZYX = 5,
        PHB = 6, PBH = 7, HPB = 8, HBP = 9, BPH = 10, BHP = 11,
        NumEulerOrders = 12
    };
    enum Handedness : int { LeftHanded = 0, RightHanded = 1 };

    trVector angles;
    int order;       // an EulerOrder
    int handedness;  // a Handedness

    trRotation() : order(XYZ), handedness(LeftHanded) {}
    explicit trRotation(trVector const &a, int eulerOrder = XYZ, int hand = LeftHanded)
        : angles(a), order(eulerOrder), handedness(hand)
    {
    }

    // The product of the three axis turns in this rotation's order, in the
    // library's own left-handed frame: a right-handed rotation is converted
    // first, so that ConvertToLeftHanded and ConvertToRightHanded never change
    // the result. For a left-handed rotation in order XYZ, a point goes where
    // trVector::RotatedXYZ(angles) takes it, and likewise for the other orders.
    // An unknown order is reported and taken as XYZ.
    trTransform<double> GetTransform() const;
    // The same turn as GetTransform, as a unit quaternion.
    trQuaternion GetQuaternion() const;

    // Re-express the same turn in another order; the handedness is kept.
    void ConvertOrderToXYZ();
    void ConvertOrderToZXY();
    // Relabels an order 0..5 with its pitch, heading and bank name 6..11; the
    // product is unchanged.
    void ConvertOrderToNative();
    // If the handedness differs, negate the x and y angles and take the new one.
    void ConvertToLeftHanded();
    void ConvertToRightHanded();

    // Same order and handedness, angles by trVector::NearlyEquals.
    bool NearlyEquals(trRotation const &o) const;

    bool operator==(trRotation const &o) const
    {
        return angles == o.angles && order == o.order && handedness == o.handedness;
    }
    bool operator!=(trRotation const &o) const { return !(*this == o); }
    // Lexicographic on order, handedness, then x, y, z: for ordered containers.
    bool operator<(trRotation const &o) const;

private:
    void ConvertOrderTo(int target);
};
