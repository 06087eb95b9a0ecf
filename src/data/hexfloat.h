// Hexadecimal-float text, the form `%21x` writes and the start-up constants use
// ("1.0x+3ff", "1.fffffffffffffX+3fe"), and `cnvstoz`, the one number reader of
// the system, which takes that form as well as decimal text and missing values.
#pragma once

namespace korvu {

// Reads a whole number from `s` into `*x`. Returns 0 on success, 1 when the text
// is not a number (then `*x` is untouched). Blanks around the number are allowed.
// Accepted forms:
//   decimal      [+-]digits[.digits][(e|E|d|D)[+-]digits], also ".5" and "5."
//   hex-float    [+-](0|1).[hexdigits](x|X)[+-]hexdigits: the value is
//                (lead + 0.hexdigits) * 2^exponent, at most 13 digits after the
//                point; "1.0x+3ff" is 2^1023. An exponent of +400 with lead 1
//                gives the bits with exponent field 0x7FF (infinity, not-a-number).
//   missing      ".", ".a" .. ".z"
// A decimal number too large for a double is refused; one too small is 0.
int cnvstoz(const char* s, double* x);

// Writes the exact bits of x as hexadecimal-float text, terminated; returns the
// length (at most 21). Form: sign ('+' or '-'), the lead digit and '.', 1 to 13
// hexadecimal digits with trailing zeros cut (at least one kept), 'X', the sign
// of the exponent and three lower-case hexadecimal digits of its magnitude.
// A normal number is "1.<fraction>X<exp>"; zero is "0.0X+000"; a subnormal is
// "0.<fraction>X-3fe"; exponent field 0x7FF is "1.<fraction>X+400".
// `cnvstoz` reads every such text back to the same bits.
int hexfloat_write(char* out, double x);

}  // namespace korvu
