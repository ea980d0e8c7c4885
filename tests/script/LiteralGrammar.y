/* The grammar as one would write it down first, lists recurring to the right, with the errors but no other actions: the
 * oracle for where the real one finds errors, what it says, and where it goes on.
 */
%require "3.8"
%language "C"
%define api.pure full
%define api.prefix {literal_}
%define api.token.prefix {T_}
%define api.value.type {kst::script::SemanticValue}
%param {kst::script::ParserActions& actions}
/* At the head of a block, "object" continues the declarations, though a statement may begin with it too. */
%expect 2

%code requires {
#include "script/language/ParserActions.h"
}

%code {
using namespace kst::script;

#define YYINITDEPTH 10000
#define YYMAXDEPTH 10000

static int literal_lex(SemanticValue* value, ParserActions& actions) { return actions.next_token(*value); }
static void literal_error(ParserActions& actions, const char* words) { actions.syntax_error(words); }
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
  : import_stmt imports
  | %empty
  ;

import_stmt
  : IMPORT id_list ';'
  | IMPORT error ';' { actions.error("Import error, undefined error in ID list"); }
  ;

id_list
  : dotted_id
  | id_list ',' dotted_id
  ;

dotted_id
  : ID
  | dotted_id '.' ID
  ;

declarations
  : %empty
  | declarations function
  | declarations class_def
  ;

function
  : func_name params ')' body
  | ID error '}'
  ;

func_name
  : ID '('
  ;

params
  : pl
  | %empty
  ;

pl
  : ID
  | pl ',' ID
  ;

class_def
  : class_head '{' object_decls members '}'
  | CLASS error { actions.error("Undefined error while definine class"); }
  ;

class_head
  : CLASS ID
  ;

members
  : function members
  | error { actions.error("Undefined error while definine class body"); }
  | %empty
  ;

block
  : '{' object_decls statements '}'
  ;

body
  : block
  | error '{' { actions.error("Expected \"{\""); }
  ;

object_decls
  : object_decl object_decls
  | %empty
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
  : ID
  | ID ASSIGN expression
  ;

statements
  : statement statements
  | %empty
  ;

statement
  : assignment
  | while_stmt
  | for_stmt
  | if_stmt
  | return_stmt
  | block
  | object_decl
  | ';'
  | error { actions.statement_error(); }
  ;

assignment
  : lvalue ASSIGN expression ';'
  | lvalue ';'
  ;

while_stmt
  : WHILE test body
  | WHILE error { actions.error("while: Expected \"( <test expression> )\""); }
  ;

for_stmt
  : FOR for_head body
  | FOR error { actions.error("for: Expected (<id> in <expr>)"); }
  ;

for_head
  : '(' ID IN expression ')'
  | '(' ID ',' ID IN expression ')'
  ;

if_stmt
  : IF test body ELSE body
  | IF test body ELSE if_stmt
  | IF test body
  | IF error { actions.error("if: error in statement"); }
  ;

return_stmt
  : RETURN ';'
  | RETURN expression ';'
  ;

lvalue
  : ID member_chain
  | ID
  ;

test
  : '(' or_expr ')'
  | '(' error ')' { actions.error("Not a valid test expression"); }
  ;

expression
  : or_expr
  ;

or_expr
  : or_expr OR and_expr
  | and_expr
  ;

and_expr
  : and_expr AND not_expr
  | not_expr
  ;

not_expr
  : NOT not_expr
  | comparison
  ;

comparison
  : sum '<' sum
  | sum LESS_EQUAL sum
  | sum '=' sum
  | sum NOT_EQUAL sum
  | sum '>' sum
  | sum GREATER_EQUAL sum
  | sum
  ;

sum
  : sum '+' product
  | sum '-' product
  | product
  ;

product
  : product '*' unary
  | product '/' unary
  | product '%' unary
  | unary
  ;

unary
  : '-' unary
  | postfix
  ;

postfix
  : primary member_chain
  | primary
  ;

primary
  : '(' or_expr ')'
  | NUMBER
  | STRING
  | BOOLCONST
  | VOID
  | ID
  | THIS
  ;

member_chain
  : chain_item
  | member_chain chain_item
  ;

chain_item
  : '.' ID
  | '.' NUMBER_WORD
  | '.' STRING_WORD
  | '.' BOOLEAN_WORD
  | '.' error { actions.error("Expected ID as member reference"); }
  | '(' arguments ')'
  ;

arguments
  : al
  | %empty
  ;

al
  : expression
  | al ',' expression
  ;

%%

bool run_literal_automaton(ParserActions& actions) { return literal_parse(actions) == 0; }
