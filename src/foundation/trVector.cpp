#include "foundation/trVector.h"

// Each Euler order is the three right-hand-rule turns in the order of its name;
// composing the single-axis forms keeps every order consistent with RotatedX/Y/Z
// to the last bit.

trVector trVector::RotatedXYZ(trVector const &r) const
{
    return RotatedX(r.x).RotatedY(r.y).RotatedZ(r.z);
}

trVector trVector::RotatedXZY(trVector const &r) const
{
    return RotatedX(r.x).RotatedZ(r.z).RotatedY(r.y);
}

trVector trVector::RotatedYXZ(trVector const &r) const
{
    return RotatedY(r.y).RotatedX(r.x).RotatedZ(r.z);
}

trVector trVector::RotatedYZX(trVector const &r) const
{
    return RotatedY(r.y).RotatedZ(r.z).RotatedX(r.x);
}

trVector trVector::RotatedZXY(trVector const &r) const
{
    return RotatedZ(r.z).RotatedX(r.x).RotatedY(r.y);
}

trVector trVector::RotatedZYX(trVector const &r) const
{
    return RotatedZ(r.z).RotatedY(r.y).RotatedX(r.x);
}

trVector trVector::RotatedSV2Legacy(trVector const &r) const
{
    return Banked(r.z).Pitched(r.x).Headed(r.y);
}

trVector trVector::InverseRotatedSV2Legacy(trVector const &r) const
{
    return Headed(-r.y).Pitched(-r.x).Banked(-r.z);
}

trVector trVector::InverseHoudiniRotatedXYZ_Deprecated(trVector const &r) const
{
    return Banked(r.z).Headed(r.y).Pitched(-r.x);
}
