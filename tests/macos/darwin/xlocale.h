#pragma once

// What libc++ asks of macOS's <xlocale.h> beyond the C library whose headers stand in for macOS's own. It is
// parsed, so that the program's files can be compiled for a Mac; nothing that uses it is linked into a
// program that runs.

#include <locale.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>
#include <wctype.h>

#define _CTYPE_A 0x00000100L  // alphabetic
#define _CTYPE_C 0x00000200L  // control
#define _CTYPE_D 0x00000400L  // digit
#define _CTYPE_G 0x00000800L  // graphic
#define _CTYPE_L 0x00001000L  // lower case
#define _CTYPE_P 0x00002000L  // punctuation
#define _CTYPE_S 0x00004000L  // space
#define _CTYPE_U 0x00008000L  // upper case
#define _CTYPE_X 0x00010000L  // hexadecimal digit
#define _CTYPE_B 0x00020000L  // blank
#define _CTYPE_R 0x00040000L  // printable
#define MB_CUR_MAX_L(locale) 4

typedef uint32_t __uint32_t;

extern "C" {
struct lconv* localeconv_l(locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
int asprintf_l(char** text, locale_t locale, const char* format, ...);
int snprintf_l(char* text, size_t size, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
int vsnprintf_l(char* text, size_t size, locale_t locale, const char* format, va_list arguments);
wint_t btowc_l(int character, locale_t locale);
int wctob_l(wint_t character, locale_t locale);
int mbtowc_l(wchar_t* wide, const char* bytes, size_t count, locale_t locale);
size_t mbrlen_l(const char* bytes, size_t count, mbstate_t* state, locale_t locale);
size_t mbrtowc_l(wchar_t* wide, const char* bytes, size_t count, mbstate_t* state, locale_t locale);
size_t wcrtomb_l(char* bytes, wchar_t wide, mbstate_t* state, locale_t locale);
size_t mbsrtowcs_l(wchar_t* wide, const char** bytes, size_t count, mbstate_t* state, locale_t locale);
size_t mbsnrtowcs_l(wchar_t* wide, const char** bytes, size_t read, size_t count, mbstate_t* state,
                    locale_t locale);
size_t wcsnrtombs_l(char* bytes, const wchar_t** wide, size_t read, size_t count, mbstate_t* state,
                    locale_t locale);
}
