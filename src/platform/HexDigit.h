// HexDigit.h - the one reader of a hexadecimal digit, shared by the platform
// layer (Wine's registry files), the message library (quoted-printable,
// percent escapes) and the host (UUIDs).
//
// It knows no platform. It is inline so that the host takes it without
// linking the platform layer (which is a shared object on Linux).
#ifndef QV_PLATFORM_HEXDIGIT_H
#define QV_PLATFORM_HEXDIGIT_H

namespace qvp {

// The value of '0'-'9', 'a'-'f' or 'A'-'F'; -1 for any other character.
inline int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace qvp

#endif  // QV_PLATFORM_HEXDIGIT_H
