// Regular expressions for the whole system, on the C library's POSIX extended
// regular expressions. One match state is kept: `regexm` records the
// subexpressions of its last successful match, and `regexs` hands them out.
#pragma once
#include <string>

namespace korvu {

// 1 if re matches somewhere in s, 0 if not, -198 if re is invalid. A match
// records its subexpressions for regexs; no match forgets them.
int regexm(const char* s, const char* re);
// s with the first `count` matches of re replaced by repl (count -1: all,
// 0: none). The replacement is literal. Returns 0 or 198 for an invalid re.
int regexr(const char* s, const char* re, const char* repl, std::string& out, int count = 1);
// Subexpression n (0 the whole match) of the last regexm that matched: 0 and
// the text ("" for a subexpression that took no part or n out of range), or
// 198 when no match is recorded.
int regexs(int n, std::string& out);
// Forgets the recorded match.
void regexclear();
// The message of the last failed compile, for callers that report it.
const char* regexerror();

} // namespace korvu
