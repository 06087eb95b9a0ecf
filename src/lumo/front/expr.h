// Expressions of the matrix language.
#pragma once

namespace korvu {

enum : int { EX_ASSIGN = 1, EX_NOLIST = 2 };

// Collects the tokens of one expression from the lexer up to one of the
// `stops` (0-terminated) outside brackets; `nlok`: an end of line continues.
void cc_exprtok(const int* stops, bool nlok);
// Compiles the collected expression; returns EX_ flags.
int cc_expr();
// The type left by the last expression.
int cc_exprtype();

} // namespace korvu
