"""The string literals of C++ sources, with the statement that each stands in."""

import re

TOKEN = re.compile(
    r"""//[^\n]*|/\*.*?\*/                  # comments
      |^[ \t]*\#[^\n]*                     # the preprocessor's lines
      |'(?:\\.|[^'\\\n])+'                 # characters
      |R"\((?P<raw>.*?)\)"
      |"(?P<text>(?:\\.|[^"\\\n])*)"
      |(?P<end>[;{}])
      |(?P<other>[^"'/;{}\#]+|.)""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "0": "\0"}


def unescape(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match.group(1), match.group(1)), text, flags=re.DOTALL)


def statements(source):
    """Pairs of a statement's code, its literals left out, and its literals. Adjacent literals are one."""
    code, literals, adjacent = "", [], False
    for token in TOKEN.finditer(source):
        literal = token.group("text") if token.group("text") is not None else token.group("raw")
        if literal is not None:
            literal = unescape(literal) if token.group("raw") is None else literal
            if adjacent:
                literals[-1] += literal
            else:
                literals.append(literal)
            adjacent = True
        elif token.group("end"):
            yield code, literals
            code, literals, adjacent = "", [], False
        elif token.group("other"):
            code += token.group("other")
            adjacent = adjacent and not token.group("other").strip()
    yield code, literals
