%{
// The parser's stacks start small and may grow up to this many entries.
#define YYINITDEPTH 200
#define YYMAXDEPTH 10000
%}

%define api.prefix {krait_hexpr_}

%code requires {
#include <string>
#include <vector>

class hexpr;

// A number as its value and as written (a leading '-' per negation): the solver reads the
// value, the certifier the written form.
struct number_literal {
  double value;
  std::string* text;
};
}

%code {
#include <cstdio>
#include <cstdlib>

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "lang/parser.hpp"
#include "lang/scanner.hpp"
#include "lang/symtab.hpp"

void krait_hexpr_error(const char* message);

// Read by the scanner: whether the word INVARIANT opens a section (or is a name).
bool invariant_sections = false;

namespace {

// State shared by the actions of one parse.
hexpr* parsed_root = nullptr;
hexpr* parsed_invariant = nullptr;
bool static_flag = false;            // inside a "static" declaration
number_literal range_lower{};        // the latest [lower, upper] of a declaration
number_literal range_upper{};
std::vector<hexpr_function*> calls;  // calls whose arguments are being read, innermost last

void forget_range() {
  delete range_lower.text;
  delete range_upper.text;
  range_lower = range_upper = number_literal{0.0, nullptr};
}

void declare_all(std::vector<std::string>* names, bool is_int) {
  for (const std::string& name : *names) {
    auto* record = new hexpr_symobj(name, range_lower.value, range_upper.value, is_int, static_flag);
    record->lower_text = *range_lower.text;
    record->upper_text = *range_upper.text;
    symtab.declare_variable(record);
  }
  delete names;
}

number_literal constant_value(std::string* name) {
  const auto constant = symtab.find_constant(*name);
  if (constant == symtab.constants.end()) error("Symbolic constant '%s' not defined.", name->c_str());
  delete name;
  return {constant->second.value, new std::string(constant->second.text)};
}

void define(std::string* name, double value, const std::string& text) {
  symtab.define_constant(*name, value, text);
  delete name;
}

// Names of symbolic constants stand for their value; every other name is a variable, whose
// declaration the translation checks.
hexpr* identifier_node(std::string* name) {
  const auto constant = symtab.find_constant(*name);
  hexpr* node;
  if (constant == symtab.constants.end()) {
    node = new hexpr_var(*name);
  } else {
    auto* value = new hexpr_const(constant->second.value, *name);
    value->literal = constant->second.text;
    node = value;
  }
  delete name;
  return node;
}

hexpr* call(const char* function, hexpr* first, hexpr* second) {
  auto* node = new hexpr_function(function);
  node->add_subexpr(first);
  node->add_subexpr(second);
  return node;
}

}  // namespace
}

%union {
  number_literal literal;
  std::string* str;
  hexpr* node;
  std::vector<std::string>* names;
}

%destructor { delete $$; } <str> <node> <names>
%destructor { delete $$.text; } <literal>

%token t_DECL 258 t_EXPR 259 t_INIT 260 t_TRANS 261 t_TARGET 262
%token t_BOOLE 263 t_FLOAT 264 t_INT 265
%token t_COMMA 266 t_SEMICOLON 267 t_PAR_O 268 t_PAR_C 269 t_BRACKET_O 270 t_BRACKET_C 271
%token t_BRACE_O 272 t_BRACE_C 273 t_PINF 274 t_MINF 275
%token <str> t_ID 276
%token t_NOT 277 t_AND 278 t_NAND 279 t_OR 280 t_NOR 281 t_XOR 282 t_NXOR 283 t_IMP 284
%token t_ADD 285 t_SUB 286 t_MUL 287 t_POW 288 t_DIV 289 t_MOD 290
%token t_LES 291 t_LEQ 292 t_GRE 293 t_GEQ 294 t_EQU 295 t_NEQ 296
%token t_IF 297 t_THEN 298 t_ELSE 299 t_FI 300 t_STATIC 301 t_TRUE 302 t_FALSE 303 t_DEFINE 304
%token t_ABS 305 t_MIN 306 t_MAX 307 t_ASL 308 t_ASR 309
%token <literal> t_CONST 310
%token t_INVARIANT 311

%type <node> formula proof_spec expr_list expr
%type <literal> float_constant
%type <names> idlist

/* Loosest first; every binary operator is left-associative. */
%left t_IMP
%left t_OR t_NOR
%left t_XOR t_NXOR
%left t_AND t_NAND
%left t_EQU t_NEQ
%left t_LES t_LEQ t_GRE t_GEQ
%left t_ADD t_SUB
%left t_MUL
%precedence t_UNARY  /* unary plus and minus; never returned by the scanner */
%left t_POW
%precedence t_NOT

%%

start
  : formula     { parsed_root = $1; }
  | proof_spec  { parsed_root = $1; }
  ;

formula
  : t_DECL declaration_list t_EXPR expr_list  { $$ = new hexpr_formula($4); }
  ;

proof_spec
  : t_DECL declaration_list t_INIT expr_list t_TRANS expr_list t_TARGET expr_list
      { $$ = new hexpr_proof_spec($4, $6, $8); }
  | t_DECL declaration_list t_INIT expr_list t_TRANS expr_list t_INVARIANT expr_list t_TARGET expr_list
      { parsed_invariant = $8; $$ = new hexpr_proof_spec($4, $6, $10); }
  ;

declaration_list
  : declaration_list var_declaration t_SEMICOLON
  | declaration_list const_declaration t_SEMICOLON
  | var_declaration t_SEMICOLON
  | const_declaration t_SEMICOLON
  ;

var_declaration
  : declaration
  | t_STATIC { static_flag = true; } declaration { static_flag = false; }
  ;

const_declaration
  : t_DEFINE t_ID t_EQU t_TRUE            { define($2, 1.0, "1"); }
  | t_DEFINE t_ID t_EQU t_FALSE           { define($2, 0.0, "0"); }
  | t_DEFINE t_ID t_EQU float_constant    { define($2, $4.value, *$4.text); delete $4.text; }
  ;

declaration
  : t_BOOLE idlist         { forget_range();
                             range_lower = {0.0, new std::string("0")};
                             range_upper = {1.0, new std::string("1")};
                             declare_all($2, true); }
  | t_INT bounds idlist    { declare_all($3, true); }
  | t_FLOAT bounds idlist  { declare_all($3, false); }
  ;

bounds
  : t_BRACKET_O float_constant t_COMMA float_constant t_BRACKET_C
      { forget_range(); range_lower = $2; range_upper = $4; }
  ;

float_constant
  : t_CONST                 { $$ = $1; }
  | t_SUB float_constant    { $$ = {-$2.value, $2.text}; *$$.text = "-" + *$$.text; }
  | t_ID                    { $$ = constant_value($1); }
  ;

idlist
  : t_ID                   { $$ = new std::vector<std::string>{std::move(*$1)}; delete $1; }
  | idlist t_COMMA t_ID    { $$ = $1; $$->push_back(std::move(*$3)); delete $3; }
  ;

/* The expressions of a section are conjoined, nested to the left. */
expr_list
  : expr t_SEMICOLON            { $$ = $1; }
  | expr_list expr t_SEMICOLON  { $$ = new hexpr_and($1, $2); }
  ;

/* Each argument goes into the innermost open call as soon as it is read. */
parameter_list
  : parameter
  | parameter t_COMMA parameter_list
  ;

parameter
  : expr  { calls.back()->add_subexpr($1); }
  ;

expr
  : t_ID                          { $$ = identifier_node($1); }
  | t_ID t_PAR_O                  { calls.push_back(new hexpr_function(*$1)); }
      parameter_list t_PAR_C      { $$ = calls.back(); calls.pop_back(); delete $1; }
  | t_CONST                       { auto* node = new hexpr_const($1.value, "");
                                    node->literal = std::move(*$1.text);
                                    delete $1.text;
                                    $$ = node; }
  | t_TRUE                        { $$ = new hexpr_const(1.0, "true"); }
  | t_FALSE                       { $$ = new hexpr_const(0.0, "false"); }
  | t_NOT expr                    { $$ = new hexpr_not($2); }
  | t_ADD expr %prec t_UNARY      { $$ = $2; }
  | t_SUB expr %prec t_UNARY      { $$ = new hexpr_uminus($2); }
  | t_PAR_O expr t_PAR_C          { $$ = new hexpr_parentheses($2); }
  | t_BRACKET_O expr t_BRACKET_C  { $$ = new hexpr_parentheses($2); }
  | t_BRACE_O expr t_BRACE_C      { $$ = new hexpr_parentheses($2); }
  | expr t_AND expr               { $$ = new hexpr_and($1, $3); }
  | expr t_NAND expr              { $$ = new hexpr_not(new hexpr_and($1, $3)); }
  | expr t_OR expr                { $$ = new hexpr_or($1, $3); }
  | expr t_NOR expr               { $$ = new hexpr_not(new hexpr_or($1, $3)); }
  | expr t_XOR expr               { $$ = new hexpr_xor($1, $3); }
  | expr t_NXOR expr              { $$ = new hexpr_not(new hexpr_xor($1, $3)); }
  | expr t_IMP expr               { $$ = new hexpr_imp($1, $3); }
  | expr t_EQU expr               { $$ = new hexpr_equ($1, $3); }
  | expr t_NEQ expr               { $$ = new hexpr_neq($1, $3); }
  | expr t_LEQ expr               { $$ = new hexpr_leq($1, $3); }
  | expr t_LES expr               { $$ = new hexpr_les($1, $3); }
  | expr t_GEQ expr               { $$ = new hexpr_geq($1, $3); }
  | expr t_GRE expr               { $$ = new hexpr_gre($1, $3); }
  | expr t_ADD expr               { $$ = new hexpr_add($1, $3); }
  | expr t_SUB expr               { $$ = new hexpr_sub($1, $3); }
  | expr t_MUL expr               { $$ = new hexpr_mul($1, $3); }
  | expr t_POW expr               { $$ = call("pow", $1, $3); }
  ;

%%

// The report names the lookahead token and the line the scanner stands on. The run ends once
// the parser has released what it built (see parse_hexpr_file).
void krait_hexpr_error(const char* message) {
  std::fflush(stdout);  // the report so far comes first, as with every fatal error
  std::fprintf(stderr, "Error while parsing hexpr: %s\n", message);
  std::fprintf(stderr, "   at expr \"%s\"\n", krait_hexpr_text);
  std::fprintf(stderr, "   at line %d\n\n", krait_hexpr_lineno);
}

hexpr* parse_hexpr_file(std::FILE* file, hexpr** invariant) {
  invariant_sections = invariant != nullptr;
  parsed_invariant = nullptr;
  YY_BUFFER_STATE buffer = krait_hexpr__create_buffer(file, hexpr_scanner_buffer_size);
  krait_hexpr__switch_to_buffer(buffer);
  // A harness parses many inputs in one process, and a fatal error may have left an earlier
  // parse inside a static declaration or an open call.
  parsed_root = nullptr;
  static_flag = false;
  forget_range();
  for (hexpr_function* open_call : calls) delete open_call;
  calls.clear();
  const int failed = krait_hexpr_parse();
  krait_hexpr__delete_buffer(buffer);
  forget_range();
  if (failed != 0) {
    // The parser freed its stacks; what remains are the calls still open and a root that
    // trailing input made invalid.
    for (hexpr_function* open_call : calls) delete open_call;
    calls.clear();
    delete parsed_root;
    delete parsed_invariant;
    end_run(1);
  }
  if (invariant != nullptr) *invariant = parsed_invariant;
  return parsed_root;
}
