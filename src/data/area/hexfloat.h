// Hexadecimal-float text, the form `%21x` writes and the start-up constants use
// ("1.0x+3ff", "1.fffffffffffffX+3fe"). `cnvstoz` (kernel/options.h) reads it.
#pragma once

namespace korvu {

// Writes the exact bits of x as hexadecimal-float text, terminated; returns the
// length (at most 21). Form: sign ('+' or '-'), the lead digit and '.', 1 to 13
// hexadecimal digits with trailing zeros cut (at least one kept), 'X', the sign
// of the exponent and three lower-case hexadecimal digits of its magnitude.
// A normal number is "1.<fraction>X<exp>"; zero is "0.0X+000"; a subnormal is
// "0.<fraction>X-3fe"; exponent field 0x7FF is "1.<fraction>X+400".
// `cnvstoz` reads every finite such text back to the same bits.
int hexfloat_write(char* out, double x);

} // namespace korvu
