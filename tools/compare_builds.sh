#!/usr/bin/env bash
# compare_builds.sh OLD_LIB NEW_LIB [CORPUS_DIR...]
#
# Differential check of two builds of liblumxml.so through the demo host:
# the same lumxml-host runs every document of the corpus with each library,
# through every subcommand that takes a document (load, dom, save, sax) in
# several flag, encoding and host code page variants, plus the write
# subcommand's variants and info; standard output, standard error, exit status and
# saved files must be byte for byte the same. Use it to show that a change
# meant to be invisible to hosts (a speed-up) really is.
#
# Without CORPUS_DIRs the corpus is tests/data, examples, the document part
# of fuzz/corpus/dom_load and fuzz/corpus/sax_pull (their option bytes are
# replayed as host options) and documents generated into the work directory
# (entity-dense text, CDATA, internal subsets, truncated prefixes, Latin-1
# and UTF-16, attribute whitespace, schema-validated text, deep nesting).
#
# Environment: LUMXML_HOST (default build/dev/tools/lumxml-host/lumxml-host),
# WORK (work directory, default a new temporary one, kept for inspection),
# ONLY (a regular expression: run only the subcommand variants it matches),
# CODEPAGES (host code pages tried, default "UTF-8 ISO-8859-1 windows-1252").
# Exit status 0 when everything matched, 1 when something differed.
set -u

if [ $# -lt 2 ]; then
    awk 'NR > 1 && /^#/ { sub(/^# ?/, ""); print; next } NR > 1 { exit }' "$0"
    exit 2
fi

ROOT=$(cd "$(dirname "$0")/.." && pwd)
OLD_LIB=$(realpath "$1")
NEW_LIB=$(realpath "$2")
shift 2
HOST=${LUMXML_HOST:-$ROOT/build/dev/tools/lumxml-host/lumxml-host}
HOST=$(realpath "$HOST")
WORK=${WORK:-$(mktemp -d /tmp/compare_builds.XXXXXX)}
ONLY=${ONLY:-.}
CODEPAGES=${CODEPAGES:-"UTF-8 ISO-8859-1 windows-1252"}
mkdir -p "$WORK"/{corpus,runs}

for f in "$OLD_LIB" "$NEW_LIB" "$HOST"; do
    [ -e "$f" ] || { echo "compare_builds: missing $f" >&2; exit 2; }
done

# ---- Corpus -------------------------------------------------------------

# Per-document extra options for the fuzz corpora, "file<TAB>options".
: > "$WORK/corpus/options.txt"

# The three option bytes of the dom_load / sax_pull fuzz targets, as the
# host options they stand for; the rest of the input is the document.
add_fuzz_corpus() {  # DIR KIND
    local dir=$1 kind=$2 f out b0 b1 opts
    for f in "$dir"/*; do
        [ -f "$f" ] || continue
        out="$WORK/corpus/fuzz-$kind-$(basename "$f").xml"
        tail -c +4 "$f" > "$out"
        read -r b0 b1 _ < <(od -An -tu1 -N3 "$f")
        b0=${b0:-0}; b1=${b1:-0}
        opts=""
        if [ "$kind" = dom_load ]; then
            (( b0 & 1 )) && opts+=" --validate"
            (( b0 & 2 )) && opts+=" --no-namespaces"
            (( b1 & 128 )) && opts+=" --limit $(( (b1 % 64) * 16 ))"
        else
            (( b0 & 1 )) && opts+=" --no-namespaces"
            (( b0 & 2 )) && opts+=" --validate"
            if (( b1 & 128 )); then opts+=" --limit $(( (b1 & 127) * 8 ))"; else opts+=" --limit -1"; fi
        fi
        printf '%s\t%s\n' "$out" "$opts" >> "$WORK/corpus/options.txt"
    done
}

generate_corpus() {
    python3 - "$WORK/corpus" <<'PYTHON'
import os, random, sys
out = sys.argv[1]
rnd = random.Random(20261122)
def write(name, data, encoding="utf-8"):
    with open(os.path.join(out, "gen-" + name + ".xml"), "wb") as f:
        f.write(data.encode(encoding) if isinstance(data, str) else data)

ESCAPES = ["&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#233;", "&#x20AC;", "&#xE9;",
           "&#65;", "&#x1F600;", "&#10;", "&#13;", "&#9;", "&#xA0;"]
WORDS = ["lorem", "ipsum", "caf\u00e9", "na\u00efve", "\u20ac", "stra\u00dfe", "x", "\u65e5\u672c",
         "\U0001F600", "end.", "a\tb", "line\nbreak", "  spaced  "]
def paragraph(n, ascii_only=False):
    words = []
    for _ in range(n):
        if rnd.random() < 0.08:
            words.append(rnd.choice(ESCAPES))
        else:
            w = rnd.choice(WORDS)
            words.append("word" if ascii_only and not w.isascii() else w)
    return " ".join(words)

for n in (20, 150, 800, 5000):
    body = "".join("<p n='%d'>%s</p>\n" % (i, paragraph(n)) for i in range(3))
    write("entities-%d" % n, "<?xml version='1.0'?>\n<doc>\n%s</doc>\n" % body)
    write("entities-flat-%d" % n, "<doc>%s</doc>" % paragraph(n))

write("cdata-adjacent",
      "<r>text<![CDATA[cdata & <raw>]]>more&amp;<![CDATA[]]><![CDATA[x]]>tail"
      "<a><![CDATA[only]]></a><b>t&#233;<![CDATA[c]]>&#x20AC;</b></r>")
write("internal-subset",
      "<?xml version='1.0'?>\n<!DOCTYPE r [\n"
      "<!ENTITY plain 'plain &#233; text'>\n"
      "<!ENTITY markup '<b>bold &amp; <i>it</i></b> after'>\n"
      "<!ENTITY nested 'n1 &plain; n2 &markup; n3'>\n"
      "<!ENTITY % pe 'ignored'>\n"
      "<!ATTLIST r d CDATA 'defaulted' id ID #IMPLIED>\n"
      "<!ELEMENT r ANY>\n<!NOTATION gif SYSTEM 'image/gif'>\n"
      "<!ENTITY pic SYSTEM 'pic.gif' NDATA gif>\n]>\n"
      "<r id='i1'>a &plain; b &markup; c &nested; d &amp; &#233;<x a='&plain;'/></r>\n")
write("comments-pis",
      "<?xml version='1.0'?>\n<?top pi?><!--c0-->\n<r>t1<!--c1-->t2<?p d?>t3&amp;<!--c2--><?q?>"
      "<![CDATA[c]]><!---->t4\n  <e/>\n  <!-- c3 -->\n</r>\n<!--after--><?after pi?>\n")
write("doctype-public",
      "<?xml version='1.0' encoding='UTF-8' standalone='no'?>\n"
      "<!DOCTYPE html PUBLIC '-//X//DTD Y//EN' 'missing.dtd' [\n<!ENTITY e 'E'>\n]>\n"
      "<html><body>&e;</body></html>\n")
write("doctype-internal-only",
      "<!DOCTYPE note [<!ELEMENT note (#PCDATA)><!ATTLIST note lang CDATA #FIXED 'en'>]>"
      "<note>hi</note>")
write("attr-whitespace",
      "<r a='tab\there' b=\"nl\nhere\" c='cr\rhere' d='&#9;&#10;&#13;' e='  lead trail  '"
      " f='&amp;&lt;&gt;&quot;&apos;' g='caf\u00e9 \u20ac &#x1F600;' h=\"it's\" i='x\r\ny'/>")
write("standalone-yes", "<?xml version='1.0' encoding='utf-8' standalone='yes'?><r/>")
write("namespaces",
      "<a:r xmlns:a='urn:a' xmlns='urn:d' xmlns:b='urn:b'><c b:x='1' y='2'><b:d xmlns=''/>"
      "<e xmlns:a='urn:a2'><a:f/></e></c></a:r>")
write("whitespace-only", "<r>\n  \n\t<a> </a>\r\n  <b/>\n</r>\n")
write("bom-utf8", b"\xef\xbb\xbf<r>bom &#233;</r>")

rich = ("<?xml version='1.0' encoding='UTF-8'?>\n<!DOCTYPE r [<!ENTITY e 'ent &#233; <i>m</i>'>]>\n"
        "<r xmlns:p='urn:p' a='1'>lead &amp; text &#233;&#x20AC; more words here"
        "<p:c x='y'>child &e; text<![CDATA[cd <ata>]]>after</p:c><!-- comment --><?pi data?>"
        "<d>" + paragraph(60) + "</d>tail &lt;end&gt;</r>\n")
write("rich", rich)
raw = rich.encode("utf-8")
cuts = sorted(set([1, 5, 20, 38, 60, 80, 100, 110, 118, 125, 140, 160, 185, 200, 230,
                   len(raw) // 2, len(raw) - 40, len(raw) - 12, len(raw) - 5, len(raw) - 2]))
for cut in cuts:
    if 0 < cut < len(raw):
        write("truncated-%04d" % cut, raw[:cut])
# A cut inside a multi-byte character and inside a character reference.
i = raw.index("\u20ac".encode("utf-8")) if "\u20ac".encode() in raw else raw.index(b"&#x20AC;")
write("truncated-midchar", raw[:i + 1])
j = raw.index(b"&#233;")
write("truncated-midref", raw[:j + 3])

latin = "<?xml version='1.0' encoding='ISO-8859-1'?>\n<r a='\u00e9t\u00e9'>caf\u00e9 &amp; \u00e0 &#x20AC; \u00ff\u00a0<s>\u00c9</s></r>\n"
write("latin1", latin, "latin-1")
write("latin1-entities", "<?xml version='1.0' encoding='ISO-8859-1'?>\n<r>%s</r>" %
      paragraph(400).replace("\U0001F600", "x").replace("\u20ac", "E").replace("\u65e5\u672c", "n"),
      "latin-1")
write("win1252", "<?xml version='1.0' encoding='windows-1252'?><r>\u20ac \u2019quotes\u2019 \u00e9</r>",
      "cp1252")
u16 = "<?xml version='1.0' encoding='UTF-16'?>\n<r a='\u00e9'>utf16 &#233; \u20ac \U0001F600 %s</r>\n" % paragraph(100)
write("utf16le-bom", b"\xff\xfe" + u16.encode("utf-16-le"))
write("utf16be-bom", b"\xfe\xff" + u16.encode("utf-16-be"))
write("ascii-nonascii", "<?xml version='1.0' encoding='US-ASCII'?><r>\u00e9</r>", "utf-8")
write("bad-utf8", b"<r>bad \xc3 byte \xff here</r>")
write("undefined-entity", "<r>a &nope; b</r>")
write("bad-charref", "<r>a &#0; b &#xD800; c</r>")
write("two-roots", "<a/><b/>")
write("mismatch", "<a><b>text &amp; more</a>")
write("deep-10000", "<d>" * 10000 + "x&amp;y" + "</d>" * 10000)
write("deep-10000-truncated", "<d>" * 10000 + "x&amp;y" + "</d>" * 5000)
write("wide-children", "<r>" + "".join("<c i='%d'>t&#%d;</c>" % (k, 192 + k % 60) for k in range(3000)) + "</r>")
# Schema validation hands the tree whitespace-collapsed (sometimes empty)
# character data, default and fixed values.
with open(os.path.join(out, "gen-schema.xsd"), "w") as f:
    f.write("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
            "<xs:element name='r'><xs:complexType mixed='true'><xs:sequence>"
            "<xs:element name='tok' type='xs:token' maxOccurs='unbounded'/>"
            "<xs:element name='norm' type='xs:normalizedString' minOccurs='0'/>"
            "<xs:element name='num' type='xs:integer' minOccurs='0'/>"
            "<xs:element name='def' type='xs:string' default='default &amp; text' minOccurs='0'/>"
            "<xs:element name='fix' type='xs:token' fixed='fixed value' minOccurs='0'/>"
            "<xs:element name='list' minOccurs='0'><xs:simpleType><xs:list itemType='xs:int'/>"
            "</xs:simpleType></xs:element></xs:sequence>"
            "<xs:attribute name='a' type='xs:token'/>"
            "<xs:attribute name='d' type='xs:string' default='attr default'/>"
            "</xs:complexType></xs:element></xs:schema>")
XSI = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='gen-schema.xsd'"
write("schema-token-empty", "<r %s><tok> </tok></r>" % XSI)
write("schema-rich",
      "<r %s a='  x \t y  '>mixed &amp; text\n  <tok>  a \t\n b &#233;&#x20AC;  <![CDATA[ c  d ]]> </tok>"
      "<tok>\n\n</tok>\n <norm> a\tb\nc &#9; </norm><num> 0042 </num><def/><fix>  fixed   value </fix>"
      "<list> 1  2\n3 </list>tail</r>" % XSI)
write("schema-invalid", "<r %s><tok>a</tok><num> 4x2 </num></r>" % XSI)
write("big-text", "<r>" + paragraph(20000) + "</r>")
write("big-text-ascii", "<r>" + paragraph(20000, True).replace("&#x1F600;", "&#65;") + "</r>")
PYTHON
}

inputs=()
if [ $# -eq 0 ]; then
    for f in "$ROOT"/tests/data/*.xml "$ROOT"/examples/*.xml; do inputs+=("$f"); done
    add_fuzz_corpus "$ROOT/fuzz/corpus/dom_load" dom_load
    add_fuzz_corpus "$ROOT/fuzz/corpus/sax_pull" sax_pull
    generate_corpus || { echo "compare_builds: generating the corpus failed" >&2; exit 2; }
    for f in "$WORK"/corpus/*.xml; do inputs+=("$f"); done
else
    for dir in "$@"; do
        case "$(realpath "$dir")" in
        */fuzz/corpus/dom_load) add_fuzz_corpus "$dir" dom_load ;;
        */fuzz/corpus/sax_pull) add_fuzz_corpus "$dir" sax_pull ;;
        *) for f in "$dir"/*; do [ -f "$f" ] && inputs+=("$(realpath "$f")"); done; continue ;;
        esac
    done
    for f in "$WORK"/corpus/fuzz-*.xml; do [ -f "$f" ] && inputs+=("$f"); done
fi

# ---- Variants -----------------------------------------------------------

# One variant per line: a name (used to filter with ONLY) and the host
# arguments; FILE stands for the document, OUT for a file to compare.
document_variants() {
    local cp
    for cp in $CODEPAGES; do
        echo "load-$cp load FILE --codepage $cp"
        echo "dom-$cp dom FILE --codepage $cp"
        echo "sax-$cp sax FILE --codepage $cp"
        echo "save-mem-$cp save FILE --codepage $cp"
        echo "save-latin1-$cp save FILE --codepage $cp --encoding ISO-8859-1"
    done
    echo "load-nons load FILE --no-namespaces"
    echo "load-validate load FILE --validate"
    echo "load-limit load FILE --limit 16"
    echo "dom-nons dom FILE --no-namespaces"
    echo "dom-count dom FILE --count"
    echo "dom-validate dom FILE --validate"
    echo "save-validate save FILE --validate"
    echo "sax-nons sax FILE --no-namespaces"
    echo "sax-validate sax FILE --validate"
    echo "sax-nolimit sax FILE --limit -1"
    echo "sax-limit sax FILE --limit 16"
    echo "sax-count sax FILE --count"
    echo "save-stream save FILE --to stream"
    echo "save-file save FILE --to file OUT"
    echo "save-utf8 save FILE --encoding UTF-8"
    echo "save-utf16 save FILE --encoding UTF-16"
    echo "save-utf16le-nobom save FILE --encoding UTF-16LE --no-bom"
    echo "save-utf16-file save FILE --encoding UTF-16 --to file OUT"
    echo "save-ascii save FILE --encoding US-ASCII"
    echo "save-1252 save FILE --encoding windows-1252 --codepage windows-1252"
    echo "save-escapes save FILE --char-escapes --attr-escapes"
    echo "save-escapes-latin1 save FILE --char-escapes --attr-escapes --encoding ISO-8859-1"
    echo "save-escapes-stream save FILE --char-escapes --to stream --codepage ISO-8859-1"
    echo "save-nobom save FILE --no-bom"
    echo "save-nons save FILE --no-namespaces --encoding UTF-16"
}

# Variants that take no document: info and the write subcommand's sample.
other_variants() {
    local e extra cp
    for cp in $CODEPAGES bogus; do echo "info-$cp info --codepage $cp"; done
    for e in "" UTF-8 UTF-16 ISO-8859-1 US-ASCII windows-1252 bogus; do
        for extra in "" --formatted --strict --fragment "--formatted --strict --fragment"; do
            echo "write-${e:-none}-${extra//[ -]/} write ${e:+--encoding $e }$extra"
        done
        echo "write-${e:-none}-file write ${e:+--encoding $e }--out OUT"
    done
}

# ---- Running ------------------------------------------------------------

# What the host prints that is not the library's answer: timings and the
# library's own path. The dom outline's indentation is written as a count
# so that a 10^4-deep outline stays small.
normalise() {
    sed -E -e 's/^time: [0-9.]+ ms$/time: (t) ms/' \
           -e 's/^(events: [0-9]+) in [0-9.]+ s$/\1 in (t) s/' \
           -e 's#^library: .*#library: (path)#' "$1" |
        awk '{ match($0, /^ */); if (RLENGTH > 8) print RLENGTH "|" substr($0, RLENGTH + 1); else print }'
}

run_one() {  # LIB TAG NAME FILE ARGS...
    local lib=$1 tag=$2 name=$3 file=$4; shift 4
    local dir="$WORK/runs/$name/$tag" args=() a
    mkdir -p "$dir"
    for a in "$@"; do
        case $a in
        FILE) args+=("$file") ;;
        OUT) args+=("$WORK/runs/out.bin") ;;
        *) args+=("$a") ;;
        esac
    done
    rm -f "$WORK/runs/out.bin"
    (cd "$WORK/runs" && timeout 300 "$HOST" --library "$lib" "${args[@]}" \
        > "$dir/stdout.raw" 2> "$dir/stderr.raw"; echo $? > "$dir/exit")
    normalise "$dir/stdout.raw" > "$dir/stdout"
    normalise "$dir/stderr.raw" > "$dir/stderr"
    rm -f "$dir/stdout.raw" "$dir/stderr.raw"
    if [ -f "$WORK/runs/out.bin" ]; then mv "$WORK/runs/out.bin" "$dir/out.bin"; fi
}

differences=0
compared=0
compare() {  # NAME FILE ARGS...
    local name=$1; shift
    run_one "$OLD_LIB" old "$name" "$@"
    run_one "$NEW_LIB" new "$name" "$@"
    compared=$((compared + 1))
    local d="$WORK/runs/$name" what=""
    for part in exit stdout stderr out.bin; do
        if [ -e "$d/old/$part" ] || [ -e "$d/new/$part" ]; then
            cmp -s "$d/old/$part" "$d/new/$part" || what+=" $part"
        fi
    done
    if [ -n "$what" ]; then
        differences=$((differences + 1))
        {
            echo "DIFFERENT ($what ): $name"
            echo "  host arguments: ${*:2} (FILE=$1)"
            for part in $what; do
                if [ "$part" = out.bin ]; then
                    cmp "$d/old/$part" "$d/new/$part" 2>&1 | head -3
                else
                    diff -a "$d/old/$part" "$d/new/$part" | head -20
                fi
            done | sed 's/^/    /'
        } >> "$WORK/report.txt"
        echo "DIFFERENT ($what ): $name"
    else
        rm -rf "$d"  # keep only what differs
    fi
}

: > "$WORK/report.txt"
echo "old library: $OLD_LIB"
echo "new library: $NEW_LIB"
echo "host:        $HOST"
echo "work:        $WORK"
echo "inputs:      ${#inputs[@]}"

mapfile -t variants < <(document_variants)
for file in "${inputs[@]}"; do
    base=$(basename "$file" .xml)
    extra=$(awk -F'\t' -v f="$file" '$1 == f { print $2 }' "$WORK/corpus/options.txt")
    for line in "${variants[@]}"; do
        read -r vname vargs <<< "$line"
        [[ $vname =~ $ONLY ]] || continue
        # shellcheck disable=SC2086  # the arguments are words on purpose
        compare "$base.$vname" "$file" $vargs
        if [ -n "$extra" ] && [[ $vname == load-UTF-8 || $vname == sax-UTF-8 || $vname == save-mem-UTF-8 ]]; then
            # shellcheck disable=SC2086
            compare "$base.$vname-fuzzopts" "$file" $vargs $extra
        fi
    done
done
while read -r vname vargs; do
    [[ $vname =~ $ONLY ]] || continue
    # shellcheck disable=SC2086
    compare "$vname" "" $vargs
done < <(other_variants)

echo "compared:    $compared runs (each with both libraries)"
echo "different:   $differences (details in $WORK/report.txt, outputs under $WORK/runs)"
[ "$differences" -eq 0 ]
