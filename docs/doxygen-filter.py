#!/usr/bin/env python3
"""Presents a public header's plain // comments to Doxygen as documentation.

The headers are written with ordinary comments. For the API reference:
  - the comment that opens the file describes the file (a \\file block);
  - a comment block directly above a declaration or a #define (no blank line
    between) documents it; when several one-line declarations follow the block
    without a blank line (overloads, a pair of fields), they form a member
    group that shares the comment;
  - a comment after code on the same line documents that member (///<),
    except after a closing brace or a preprocessor line;
  - every other comment stays an ordinary comment.
Text in the comments is taken literally: backslashes, '@', '#' and '%' outside
double quotes are escaped so that Doxygen reads no command into them. Line
numbers are kept, so Doxygen's messages point at the header's own lines.
Reads the file named by the first argument, writes the result to stdout.
"""
import re
import sys

COMMENT = re.compile(r"^(\s*)//(?!/)( ?)(.*)$")


def literal(text):
    """Comment text with the characters Doxygen would read as markup escaped;
    Doxygen already takes text in double quotes literally."""
    parts = text.split('"')
    for k in range(0, len(parts), 2):
        part = parts[k].replace("\\", "\\\\").replace("@", "\\@")
        parts[k] = re.sub(r"([#%])(?=\w)", r"\\\1", part)
    return '"'.join(parts)


def doc_line(line):
    indent, space, text = COMMENT.match(line).groups()
    return f"{indent}///{space}{literal(text)}"


def trailing_comment(line):
    """The line with a trailing // comment made into ///<, when it documents code."""
    at = line.find("//")
    while at != -1:
        code = line[:at]
        if code.count('"') % 2 == 0 and code.strip():
            if code.strip().startswith(("#", "}")) or line[at:].startswith("///"):
                return line
            return code + "///<" + literal(line[at + 2:])
        at = line.find("//", at + 2)
    return line


def declaration_run(lines, start):
    """End index of the lines that directly follow a comment block at start,
    and whether they hold two or more plain declarations (no braces)."""
    end = start
    while end < len(lines):
        stripped = lines[end].strip()
        if not stripped or COMMENT.match(lines[end]) or stripped.startswith(("}", "#")) \
                or stripped.endswith(":"):
            break
        end += 1
    run = lines[start:end]
    statements = sum(1 for line in run if line.split("//")[0].rstrip().endswith((";", "}")))
    # One-line inline functions pass; a body or a class over several lines does not.
    plain = all(line.split("//")[0].count("{") == line.split("//")[0].count("}") for line in run)
    return end, statements >= 2 and plain


def convert(lines):
    out = []
    i = 0
    opening = True
    while i < len(lines):
        if not COMMENT.match(lines[i]):
            if lines[i].strip():
                opening = False
            out.append(lines[i] if opening else trailing_comment(lines[i]))
            i += 1
            continue
        block_end = i
        while block_end < len(lines) and COMMENT.match(lines[block_end]):
            block_end += 1
        block = lines[i:block_end]
        follows = lines[block_end].strip() if block_end < len(lines) else ""
        if opening:
            out.extend(doc_line(line) for line in block)
            out[len(out) - len(block)] += " \\file"
            opening = False
            i = block_end
            continue
        documents = follows and (not follows.startswith(("}", "#")) or follows.startswith("#define"))
        if not documents:
            out.extend(block)
            i = block_end
            continue
        out.extend(doc_line(line) for line in block)
        run_end, group = declaration_run(lines, block_end)
        run = [trailing_comment(line) for line in lines[block_end:run_end]]
        if group:
            run[0] = "/** @{ */ " + run[0]
            run[-1] += " /** @} */"
        out.extend(run)
        i = run_end
    return out


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        text = header.read().split("\n")
    sys.stdout.write("\n".join(convert(text)))


if __name__ == "__main__":
    main()
