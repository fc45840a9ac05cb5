"""Makes small faults in C++ source text: the mutants that tools/mutate.py tries one after the other.

Works on tokens, and relies on the form that clang-format gives our files: blanks around binary
operators, none around template brackets and behind the "&" and "*" of a declaration.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#[^\n]*)
      | (?P<string>(?:u8|u|U|L)?"(?:\\.|[^"\\\n])*")
      | (?P<character>(?:u8|u|U|L)?'(?:\\.[0-9A-Fa-f]*|[^'\\\n])')
      | (?P<number>0[xX][0-9A-Fa-f']+[uUlL]*|\d[\d']*(?:\.\d+)?[uUlLfF]*)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><=>|<<=|>>=|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||\+=|-=|\*=|/=|%=|&=|\|=|::|\[\[|\]\]
          |[-+*/%<>=!&|^~?:;,.(){}\[\]])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

BINARY = {
    "<": ["<="], ">": [">="], "<=": ["<"], ">=": [">"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="],
    ">>=": ["<<="], "<<=": [">>="],
}
UNARY = {"!": "", "-": "", "~": "", "++": "--", "--": "++"}

PAIRS = [
    ("true", "false"), ("min", "max"), ("floor", "ceil"), ("front", "back"),
    ("startsWith", "endsWith"), ("indexOf", "lastIndexOf"), ("toLower", "toUpper"),
    ("isHighSurrogate", "isLowSurrogate"), ("all_of", "any_of"), ("break", "continue"),
]
SWAPPED_WORDS = {a: b for pair in PAIRS for a, b in (pair, pair[::-1])}

# What begins with one of these is no statement that could be left out.
NO_STATEMENT = set(
    "if else for while do switch case default return const constexpr static using namespace struct"
    " class enum template public private protected explicit virtual friend try catch extern"
    " throw".split()
)
DECLARATION = re.compile(r"[\w:]+(<[^;=()]*>)?[\s*&]+\w+\s*(=[^=]|;|\{|\(|\[)")

# A line with so many literals is the row of a table: its first one stands for all.
LITERALS_OF_A_ROW = 4


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclass(frozen=True)
class Mutant:
    start: int
    end: int
    text: str
    source: str

    @property
    def line(self):
        return self.source.count("\n", 0, self.start) + 1

    def applied(self):
        return self.source[: self.start] + self.text + self.source[self.end :]

    def lines(self):
        """The lines it touches, as they are and as it makes them, on one line each."""
        first = self.source.rfind("\n", 0, self.start) + 1
        last = self.source.find("\n", self.end)
        before = self.source[first:last]
        after = self.source[first : self.start] + self.text + self.source[self.end : last]
        return " ".join(before.split()), " ".join(after.split())


def tokens_of(source):
    found = [Token(m.lastgroup, m.group(), m.start()) for m in TOKEN.finditer(source)]
    return [t for t in found if t.kind not in ("comment", "directive")]


def other_character(literal):
    prefix, body = literal.split("'", 1)
    body = body[:-1]
    if body.startswith("\\u"):
        return f"{prefix}'\\u{int(body[2:], 16) + 1:04X}'"
    if body.startswith("\\"):
        return f"{prefix}'#'"
    following = chr(ord(body) + 1)
    return prefix + "'" + ("\\" if following in "'\\" else "") + following + "'"


def other_strings(literal):
    prefix, body = literal.split('"', 1)
    body = body[:-1]
    if not body:
        return [prefix + '"mutant"']
    others = [""]
    if len(body) > 1 and "\\" not in body:
        others.append(body[:-1])
    return [f'{prefix}"{other}"' for other in others]


def other_numbers(literal):
    digits = literal.replace("'", "")
    suffix = re.search(r"[uUlLfF]*$", digits).group() if not digits.lower().startswith("0x") else ""
    if digits.lower().startswith("0x"):
        suffix = re.search(r"[uUlL]*$", digits).group()
        value = int(digits[: len(digits) - len(suffix)], 16)
        return [f"{other:#x}{suffix}" for other in (value + 1, value - 1) if other >= 0]
    digits = digits[: len(digits) - len(suffix)]
    value = float(digits) if "." in digits else int(digits)
    return [f"{other}{suffix}" if other >= 0 else f"({other}{suffix})"
            for other in (value + 1, value - 1)]


class Mutator:
    def __init__(self, source):
        self.source = source
        self.tokens = tokens_of(source)
        self.partners = self._partners()
        self.literals_in_line = {}
        self.found = {}

    def mutants(self):
        for index, token in enumerate(self.tokens):
            self._token(index, token)
            if token.text in ("if", "while"):
                self._condition(index)
            elif token.text == "?":
                self._choice(index)
            elif token.text == "return":
                self._return(index)
            self._statement(index)
        return sorted(self.found.values(), key=lambda m: (m.start, m.end, m.text))

    def _partners(self):
        opened, partners = [], {}
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in ("(", "{", "[", "[["):
                opened.append(index)
            elif token.text in (")", "}", "]", "]]"):
                partners[opened[-1]] = index
                partners[index] = opened.pop()
        return partners

    def _add(self, start, end, text):
        first = self.source.rfind("\n", 0, start) + 1
        line = self.source[first : self.source.find("\n", start)]
        # What asserts or reserves memory changes nothing that a test could see.
        unseen = re.search(r"Q_ASSERT|Q_UNREACHABLE|static_assert|\.reserve\(", line)
        if unseen or text == self.source[start:end]:
            return
        self.found[(start, end, text)] = Mutant(start, end, text, self.source)

    def _replace(self, token, text):
        self._add(token.start, token.end, text)

    def _token(self, index, token):
        if token.kind in ("character", "number", "string"):
            if self._is_further_of_row(token):
                return
            others = {"character": lambda t: [other_character(t)], "number": other_numbers,
                      "string": other_strings}[token.kind](token.text)
            for other in others:
                self._replace(token, other)
        elif token.kind == "word" and token.text in SWAPPED_WORDS:
            self._replace(token, SWAPPED_WORDS[token.text])
        elif token.kind == "sign":
            before = self.source[token.start - 1]
            behind = self.source[token.end]
            if token.text in BINARY and before == " " and behind in " \n":
                for other in BINARY[token.text]:
                    self._replace(token, other)
            elif token.text in UNARY and behind not in " \n" or token.text in ("++", "--"):
                self._replace(token, UNARY[token.text])

    def _is_further_of_row(self, token):
        line = self.source.count("\n", 0, token.start)
        if line not in self.literals_in_line:
            row = [t for t in self.tokens if t.kind in ("character", "number")
                   and self.source.count("\n", 0, t.start) == line]
            self.literals_in_line[line] = row
        row = self.literals_in_line[line]
        return len(row) >= LITERALS_OF_A_ROW and token in row[1:]

    def _condition(self, index):
        if self.tokens[index + 1].text != "(":
            return
        first, last = index + 2, self.partners[index + 1]
        for inner in range(first, last):
            if self.tokens[inner].text == ";":
                first = inner + 1
        self._conditions_of(self.tokens[first].start, self.tokens[last].start)

    def _conditions_of(self, start, end):
        condition = self.source[start:end]
        self._add(start, end, f"({condition}) || true")
        self._add(start, end, f"({condition}) && false")

    def _choice(self, index):
        first = index
        while self.tokens[first - 1].text not in ("(", "{", "[", ",", "=", "return", ";", ":", "?",
                                                  "+", "-", "+="):
            first = self.partners.get(first - 1, first - 1)
        start, end = self.tokens[first].start, self.tokens[index - 1].end
        for other in ("true", "false"):
            self._add(start, end, other)

    def _return(self, index):
        end = self._end_of_statement(index)
        if end is None or end == index + 1:
            return
        start = self.tokens[index + 1].start
        stop = self.tokens[end].start
        if self.source[start:stop] not in ("{}", "0", "false", "std::nullopt", "QString()"):
            self._add(start, stop, "{}")

    def _end_of_statement(self, index):
        while index < len(self.tokens):
            token = self.tokens[index]
            if token.text == ";":
                return index
            if token.text in (")", "}", "]"):
                return None
            index = self.partners[index] + 1 if token.text in ("(", "{", "[", "[[") else index + 1
        return None

    def _statement(self, index):
        if index == 0 or not self._begins_statement(index):
            return
        token = self.tokens[index]
        if token.text in NO_STATEMENT or token.text in ("{", "}", ";", "[["):
            return
        end = self._end_of_statement(index)
        if end is None or DECLARATION.match(self.source, token.start):
            return
        self._add(token.start, self.tokens[end].start, "")

    def _begins_statement(self, index):
        before = self.tokens[index - 1].text
        if before in (";", "{", "}", "else"):
            return not self._stands_in_parentheses(index)
        if before == ")":
            opening = self.partners[index - 1]
            return opening > 0 and self.tokens[opening - 1].text in ("if", "for", "while")
        return False

    def _stands_in_parentheses(self, index):
        while index > 0:
            index -= 1
            text = self.tokens[index].text
            if text in (")", "}", "]", "]]"):
                index = self.partners[index]
            elif text in ("(", "["):
                return True
            elif text == "{":
                return False
        return True


def mutants_of(source):
    return Mutator(source).mutants()
