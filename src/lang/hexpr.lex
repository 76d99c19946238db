%top{
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "lang/scanner.hpp"

// Files are read 8 KiB at a time into a 16 KiB buffer.
#define YY_BUF_SIZE hexpr_scanner_buffer_size
#define YY_READ_BUF_SIZE 8192
#define YY_FATAL_ERROR(message) krait_hexpr_fatal(message)
// flex still emits its own fatal-error routine, which the override above leaves unused.
#pragma GCC diagnostic ignored "-Wunused-function"
}

%option prefix="krait_hexpr_"
%option noyywrap nounput noinput never-interactive nounistd

%x COMMENT

%{
#include "base/error.hpp"
#include "base/numbers.hpp"
#include "hexpr.tab.hpp"

namespace {

int number_token() {
  if (str_to_double(yytext, krait_hexpr_lval.literal.value)) error("Cannot convert %s to type double.", yytext);
  krait_hexpr_lval.literal.text = new std::string(yytext);
  return t_CONST;
}

// The parser action that consumes the name owns the string.
int identifier_token() {
  krait_hexpr_lval.str = new std::string(yytext);
  return t_ID;
}

void count_newlines() {
  for (const char* c = yytext; *c != '\0'; ++c)
    if (*c == '\n') ++krait_hexpr_lineno;
}

}  // namespace
%}

DIGIT       [0-9]
IDENTIFIER  [A-Za-z_][A-Za-z0-9_]*

%%

{DIGIT}+                              { return number_token(); }
{DIGIT}*"."{DIGIT}+("e"[+-]?{DIGIT}+)? { return number_token(); }
{DIGIT}+"e"[+-]?{DIGIT}+              { return number_token(); }

"DECL"      { return t_DECL; }
"EXPR"      { return t_EXPR; }
"INIT"      { return t_INIT; }
"TRANS"     { return t_TRANS; }
"TARGET"    { return t_TARGET; }
"INVARIANT" { return invariant_sections ? t_INVARIANT : identifier_token(); }
"boole"     { return t_BOOLE; }
"float"     { return t_FLOAT; }
"int"       { return t_INT; }
","         { return t_COMMA; }
";"         { return t_SEMICOLON; }
"("         { return t_PAR_O; }
")"         { return t_PAR_C; }
"["         { return t_BRACKET_O; }
"]"         { return t_BRACKET_C; }
"{"         { return t_BRACE_O; }
"}"         { return t_BRACE_C; }
"inf"       { return t_PINF; }
"+inf"      { return t_PINF; }
"-inf"      { return t_MINF; }
"not"       { return t_NOT; }
"!"         { return t_NOT; }
"and"       { return t_AND; }
"nand"      { return t_NAND; }
"or"        { return t_OR; }
"nor"       { return t_NOR; }
"xor"       { return t_XOR; }
"nxor"      { return t_NXOR; }
"<->"       { return t_NXOR; }
"impl"      { return t_IMP; }
"->"        { return t_IMP; }
"+"         { return t_ADD; }
"-"         { return t_SUB; }
"*"         { return t_MUL; }
"^"         { return t_POW; }
"/"         { return t_DIV; }
"div"       { return t_DIV; }
"<"         { return t_LES; }
"<="        { return t_LEQ; }
">"         { return t_GRE; }
">="        { return t_GEQ; }
"="         { return t_EQU; }
"!="        { return t_NEQ; }
"if"        { return t_IF; }
"then"      { return t_THEN; }
"else"      { return t_ELSE; }
"fi"        { return t_FI; }
"static"    { return t_STATIC; }
"true"      { return t_TRUE; }
"false"     { return t_FALSE; }
"define"    { return t_DEFINE; }

{IDENTIFIER}     { return identifier_token(); }
{IDENTIFIER}"'"  { return identifier_token(); }

"--"                  { BEGIN(COMMENT); }
<COMMENT>[^\n]+       { }
<INITIAL,COMMENT>\n   { ++krait_hexpr_lineno; BEGIN(INITIAL); }
[ \t\n]+              { count_newlines(); }
\r                    { }

<COMMENT><<EOF>>      { BEGIN(INITIAL); yyterminate(); }

.                     { std::printf("Unmatched character: %s\n", yytext); }

%%

void krait_hexpr_fatal(const char* message) {
  // The generated messages name the scanner functions without our prefix. No allocation here:
  // some of these failures are out-of-memory conditions.
  if (const char* at = std::strstr(message, "yy")) {
    std::fwrite(message, 1, static_cast<std::size_t>(at - message), stderr);
    std::fputs("krait_hexpr_", stderr);
    message = at + 2;
  }
  std::fprintf(stderr, "%s\n", message);
  std::exit(2);
}
