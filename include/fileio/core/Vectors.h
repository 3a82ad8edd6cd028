// Vectors.h - the suite's small value types: vectors, rotations, colours, patch ids and
// matrices.
//
// Plain structs with public members in the order the file format stores them; they hold no
// behaviour of their own beyond zero initialisation. Their text form is String's (components
// as floats with nine significant digits, joined by one space) and their binary form is the
// members' bytes in order, little-endian.
#pragma once

struct Vector2 {
    float x = 0, y = 0;
};

struct Vector {
    float x = 0, y = 0, z = 0;
};

struct Vector4 {
    float x = 0, y = 0, z = 0, w = 0;
};

struct Quaternion {
    float x = 0, y = 0, z = 0, w = 0;
};

/// A rotation as three angles about x, y and z.
struct Rotate {
    float x = 0, y = 0, z = 0;
};

/// A rotation as three Euler angles, in the order they are applied.
struct RotateEuler {
    float x = 0, y = 0, z = 0;
};

struct RGBFloat {
    float red = 0, green = 0, blue = 0;
};

struct RGBAFloat {
    float red = 0, green = 0, blue = 0, alpha = 0;
};

/// An 8-bit-per-channel colour.
struct ColorBuf {
    unsigned char red = 0, green = 0, blue = 0, alpha = 0;
};

/// The four 32-bit words that name a patch.
struct PatchID {
    unsigned int word[4] = {0, 0, 0, 0};
};

struct Matrix33 {
    Vector row[3];
};

struct Matrix34 {
    Vector4 row[3];
};

struct Matrix44 {
    Vector4 row[4];
};

static_assert(sizeof(Vector2) == 8 && sizeof(Vector) == 12 && sizeof(Vector4) == 16);
static_assert(sizeof(ColorBuf) == 4 && sizeof(PatchID) == 16);
static_assert(sizeof(Matrix33) == 36 && sizeof(Matrix34) == 48 && sizeof(Matrix44) == 64);
