// Characteristics: named texts attached to a variable or to the dataset
// (`_dta`). Each is a dictionary item of kind 17 under the owner's name, whose
// block holds the characteristic's name in its first 33 bytes and then the
// text with its terminator.
#pragma once
#include <cstddef>

namespace korvu {

inline constexpr int CHAR_NAMELEN1 = 33;
inline constexpr int CHAR_MAXTEXT = 67783; // longer texts are cut

// Text of obj[name] or null; *len (when given) its length.
const char* charfind(const char* obj, const char* name, int* len);
// Copies the text (or "") into dst of n bytes; returns dst.
char* charload(const char* obj, const char* name, char* dst, size_t n);
char* charloadshort(const char* obj, const char* name, char* dst, size_t n);
// Defines obj[name]; empty text removes it. 0 or 950.
int charsave(const char* obj, const char* name, const char* text);
// Removes obj[name], or every characteristic of obj when name is null.
void charrm(const char* obj, const char* name = nullptr);
// Walks every characteristic (ptr null starts); objout/nameout take 33 bytes
// when given; *text the text. Returns the next item or null. The order is the
// order of definition.
const void* charnext(const void* ptr, char* objout, char* nameout, const char** text);
// A characteristic's item pointer handed out by charnext: its parts.
const char* charnextptr_name(const void* ptr);
const char* charnextptr_text(const void* ptr);

// For the variable commands: a renamed variable takes its characteristics
// (and its variable label) along; a dropped one loses them.
void char_rename(const char* oldname, const char* newname);
void char_dropvar(const char* name);

// Merging: notes of the incoming `_dta` set renumbered behind the existing
// ones (charpreproc saves the existing set aside, charspostproc joins).
void charpreproc();
void charspostproc();

// The `var[char]' macro form; 0 or a code.
int charfcn(const char* obj, const char* name, char* dst, size_t n);

int charcmd(int);
int notescmd(int);

} // namespace korvu
