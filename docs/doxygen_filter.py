#!/usr/bin/python3
"""Doxygen input filter for the library's headers.

The headers document every declaration with plain // comments directly above
it (and a trailing // for short members). Doxygen reads only its own comment
forms, so this filter turns those into doc comments: an opening block set
apart by a blank line describes the file, a block directly above a
declaration documents it, and a trailing comment documents the member on its
line. Every header also joins the group of its subsystem folder
(docs/groups.dox).
"""
import re
import sys

path = sys.argv[1]
lines = open(path, encoding="utf-8").read().split("\n")
folder = re.search(r"palvet/([a-z]+)/[^/]+$", path)
out = ["/// \\file"]
if folder:
    out.append("/// \\ingroup " + folder.group(1))
seen_declaration = False
file_described = False
i = 0
while i < len(lines):
    stripped = lines[i].strip()
    if stripped.startswith("//"):
        j = i
        while j < len(lines) and lines[j].strip().startswith("//"):
            j += 1
        block = [re.sub(r"^(\s*)//", r"\1///", b, count=1) for b in lines[i:j]]
        apart = j < len(lines) and lines[j].strip() == ""
        if not file_described and not seen_declaration and apart:
            file_described = True
            out.append("/// \\file")
            out.extend(block)
        elif len(block) == 1 and re.match(r"^\s*///\s*-{3,}", block[0]):
            # A rule like "// ---- Drawing ----" heads a group of
            # declarations; it documents none of them.
            out.append(lines[i])
        else:
            # One block over several declarations (no blank line between
            # them) documents them all: a member group hands it on.
            k = j
            ends = 0
            while k < len(lines) and lines[k].strip() and not lines[k].strip().startswith("//"):
                ends += lines[k].rstrip().endswith(";")
                k += 1
            if ends > 1:
                out.append("/** @name */ //@{")
                out.extend(block)
                for line in lines[j:k]:
                    out.append(re.sub(r"([;,{])(\s*)//(?!/)", r"\1\2///<", line))
                out.append("//@}")
                seen_declaration = True
                i = k
                continue
            out.extend(block)
        i = j
        continue
    if stripped and not stripped.startswith("#"):
        seen_declaration = True
    if stripped.startswith("#define"):
        out.append(re.sub(r"(\s)//(?!/)", r"\1///<", lines[i], count=1))
    else:
        out.append(re.sub(r"([;,{])(\s*)//(?!/)", r"\1\2///<", lines[i]))
    i += 1
sys.stdout.write("\n".join(out))
