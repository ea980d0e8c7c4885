/* The language, with the points at which the parser goes on after a syntax error.
 *
 * Lists recur to the left, so that their length takes no room on the state stack: only nesting does. A chain of else-ifs
 * is a list too. A production does no more than call one of the ParserActions.
 */
%require "3.8"
%language "C"
%define api.pure full
%define api.prefix {grammar_}
%define api.token.prefix {T_}
%define api.value.type {kst::script::SemanticValue}
%param {kst::script::ParserActions& actions}
%expect 0

%code requires {
#include "script/language/ParserActions.h"
}

%code {
using namespace kst::script;

/* The stack has a fixed size, in this call's frame. */
#define YYINITDEPTH 499
#define YYMAXDEPTH 499

static int grammar_lex(SemanticValue* value, ParserActions& actions) { return actions.next_token(*value); }
static void grammar_error(ParserActions& actions, const char* words) { actions.syntax_error(words); }
}

/* The numbers are those of TokenType. */
%token ID NUMBER STRING BOOLCONST
%token IF ELSE OBJECT NUMBER_WORD STRING_WORD BOOLEAN_WORD IMPORT RETURN AND OR CLASS NOT VOID THIS WHILE FOR IN
%token ASSIGN LESS_EQUAL GREATER_EQUAL NOT_EQUAL UNSCANNABLE

%%

program
  : imports object_decls declarations
  | error { actions.error("Unexpected token"); }
  ;

imports
  : %empty
  | imports import_stmt
  ;

import_stmt
  : IMPORT id_list ';'
  | IMPORT error ';' { actions.error("Import error, undefined error in ID list"); }
  ;

id_list
  : dotted_id { actions.import_id($1); }
  | id_list ',' dotted_id { actions.import_id($3); }
  ;

dotted_id
  : ID
  | dotted_id '.' ID { $$ = actions.extend_dotted_id($1, $3); }
  ;

declarations
  : %empty
  | declarations function
  | declarations class_def
  ;

function
  : func_head params ')' { actions.end_parameters(); } body { actions.end_function($1, $5); }
  | ID error '}'
  ;

func_head
  : ID '(' { $$ = actions.begin_function($1); }
  ;

params
  : %empty
  | param_list
  ;

param_list
  : ID { actions.parameter($1); }
  | param_list ',' ID { actions.parameter($3); }
  ;

class_def
  : class_head '{' object_decls methods '}' { actions.leave_scope($1); }
  | class_head '{' object_decls broken_methods '}' { actions.leave_scope($1); }
  | CLASS error { actions.error("Undefined error while definine class"); }
  ;

class_head
  : CLASS ID { $$ = actions.begin_class($2); }
  ;

methods
  : %empty
  | methods function
  ;

/* Goes on at the end of the class. */
broken_methods
  : methods error { actions.error("Undefined error while definine class body"); }
  | broken_methods error { actions.error("Undefined error while definine class body"); }
  ;

/* Objects at the head of a block are statements like those further down. */
block
  : open_block statements '}' { actions.end_block($1); $$ = $2; }
  ;

open_block
  : '{' { $$ = actions.begin_block(); }
  ;

body
  : block
  | error '{' { actions.error("Expected \"{\""); $$ = no_value; }
  ;

object_decls
  : %empty
  | object_decls object_decl
  ;

object_decl
  : OBJECT object_items ';'
  | OBJECT error ';' { actions.error("Error declaring objects"); }
  ;

object_items
  : object_item
  | object_items ',' object_item
  ;

object_item
  : ID { actions.declare_object($1); }
  | ID ASSIGN { actions.begin_initializer($1); } expression { actions.assign($4); }
  ;

statements
  : %empty { $$ = actions.statements_here(); }
  | statements statement { $$ = actions.append_statement($1, $2); }
  ;

statement
  : assignment { $$ = no_value; }
  | while_stmt
  | for_stmt
  | if_stmt
  | return_stmt
  | block
  | object_decl { $$ = no_value; }
  | ';' { $$ = no_value; }
  | error { actions.statement_error(); $$ = no_value; }
  ;

assignment
  : lvalue ASSIGN expression ';' { actions.assign($3); }
  | lvalue ';' { actions.pop_value(); }
  ;

while_stmt
  : while_word test { $2 = actions.begin_body($2); } body { actions.end_while($1, $2); $$ = $4; }
  | while_word error { actions.error("while: Expected \"( <test expression> )\""); $$ = no_value; }
  ;

while_word
  : WHILE { $$ = actions.begin_statement($1); }
  ;

for_stmt
  : for_word for_head body { actions.end_for($2); $$ = $3; }
  | for_word error { actions.error("for: Expected (<id> in <expr>)"); $$ = no_value; }
  ;

for_word
  : FOR { $$ = actions.begin_statement($1); }
  ;

for_head
  : '(' ID IN { $$ = actions.begin_for($2, nullptr); } expression ')'
      { $$ = actions.for_head($4, $2, nullptr, $5); }
  | '(' ID ',' ID IN { $$ = actions.begin_for($2, &$4); } expression ')'
      { $$ = actions.for_head($6, $2, &$4, $7); }
  ;

if_stmt
  : if_chain { $$ = actions.end_if($1, no_value); }
  | if_else body { $$ = actions.end_if($1, $2); }
  | if_word error { actions.error("if: error in statement"); $$ = no_value; }
  | if_else if_word error { actions.error("if: error in statement"); $$ = no_value; }
  ;

if_chain
  : if_part
  | if_else if_part { $$ = actions.else_if_part($1, $2); }
  ;

if_part
  : if_word test { $2 = actions.begin_body($2); } body { $$ = actions.if_part($2, $4); }
  ;

if_word
  : IF { $$ = actions.begin_statement($1); }
  ;

if_else
  : if_chain ELSE { $$ = actions.begin_else($1); }
  ;

return_stmt
  : return_word ';' { $$ = actions.return_statement(actions.void_()); }
  | return_word expression ';' { $$ = actions.return_statement($2); }
  ;

return_word
  : RETURN { $$ = actions.begin_statement($1); }
  ;

lvalue
  : ID { actions.chained_lvalue($1); } member_chain
  | ID { actions.lvalue($1); }
  ;

test
  : '(' or_expr ')' { $$ = actions.to_jump($2); }
  | '(' error ')' { actions.error("Not a valid test expression"); $$ = actions.to_jump(no_value); }
  ;

expression
  : or_expr { $$ = actions.to_value($1); }
  ;

or_expr
  : or_expr OR { $$ = actions.or_left($1); } and_expr { $$ = actions.or_right($3, $4); }
  | and_expr
  ;

and_expr
  : and_expr AND { $$ = actions.and_left($1); } not_expr { $$ = actions.and_right($3, $4); }
  | not_expr
  ;

not_expr
  : NOT not_expr { $$ = actions.not_($2); }
  | comparison
  ;

comparison
  : sum '<' value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::lt); }
  | sum LESS_EQUAL value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::le); }
  | sum '=' value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::eq); }
  | sum NOT_EQUAL value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::ne); }
  | sum '>' value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::gt); }
  | sum GREATER_EQUAL value_1 sum { $$ = actions.binary($3, $4, ImBinOp::Operator::ge); }
  | sum
  ;

/* The operand ahead of an operator, two symbols back, as a value on the stack. */
value_1
  : %empty { $$ = actions.to_value($-1); }
  ;

sum
  : sum '+' value_1 product { $$ = actions.binary($3, $4, ImBinOp::Operator::add); }
  | sum '-' value_1 product { $$ = actions.binary($3, $4, ImBinOp::Operator::sub); }
  | product
  ;

product
  : product '*' value_1 unary { $$ = actions.binary($3, $4, ImBinOp::Operator::mul); }
  | product '/' value_1 unary { $$ = actions.binary($3, $4, ImBinOp::Operator::div); }
  | product '%' value_1 unary { $$ = actions.binary($3, $4, ImBinOp::Operator::mod); }
  | unary
  ;

unary
  : '-' unary { $$ = actions.negate($2); }
  | postfix
  ;

postfix
  : primary { actions.to_value($1); } member_chain { $$ = actions.deref($3); }
  | primary
  ;

primary
  : '(' or_expr ')' { $$ = $2; }
  | NUMBER { $$ = actions.number($1); }
  | STRING { $$ = actions.string($1); }
  | BOOLCONST { $$ = actions.boolean($1); }
  | VOID { $$ = actions.void_(); }
  | ID { $$ = actions.id_value($1); }
  | THIS { $$ = actions.this_(); }
  ;

member_chain
  : chain_item
  | member_chain chain_item { $$ = $2; }
  ;

chain_item
  : '.' ID { $$ = actions.member($2); }
  | '.' NUMBER_WORD { $$ = actions.convert(ImCommand::Command::cnv_number, ValueKind::number); }
  | '.' STRING_WORD { $$ = actions.convert(ImCommand::Command::cnv_string, ValueKind::string); }
  | '.' BOOLEAN_WORD { $$ = actions.convert(ImCommand::Command::cnv_boolean, ValueKind::boolean); }
  | '.' error { actions.error("Expected ID as member reference"); $$ = no_value; }
  | '(' arguments ')' { $$ = actions.call($2.count); }
  ;

arguments
  : %empty { $$ = no_value; }
  | argument_list
  ;

argument_list
  : argument { $$ = no_value; $$.count = 1; }
  | argument_list ',' argument { $$ = $1; ++$$.count; }
  ;

argument
  : expression { actions.argument($1); }
  ;

%%

namespace kst::script {

static_assert(T_ID == static_cast<int>(TokenType::identifier) && T_IF == static_cast<int>(TokenType::if_) &&
              T_IN == static_cast<int>(TokenType::in) && T_UNSCANNABLE == static_cast<int>(TokenType::unscannable));

bool run_automaton(ParserActions& actions) { return grammar_parse(actions) == 0; }

} // namespace kst::script
