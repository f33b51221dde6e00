#!/usr/bin/env python3
"""Generates hostile documents and runs each through lumxml, one process per
document and path, under a time and an address-space limit.

Prints a table: document, path, seconds, peak memory above what the process
used just before the call (MB), outcome. Used by tools/hostile.sh.
"""
import argparse
import os
import re
import resource
import signal
import subprocess
import sys
import time

LIMIT = 50000  # the expansion limit of the hardened settings


# ---- Documents ---------------------------------------------------------------

def billion_laughs():
    text = '<!DOCTYPE l [<!ENTITY a0 "ha">'
    for i in range(1, 10):
        text += '<!ENTITY a%d "%s">' % (i, ('&a%d;' % (i - 1)) * 10)
    return text + ']><l>&a9;</l>'


def pe_bomb(leaf):
    # Parameter entities whose replacement texts name the level below
    # (through &#37;, a percent sign once declared): 10^9 expansions.
    text = '<!DOCTYPE r [<!ENTITY %% p0 "%s">' % leaf
    for i in range(1, 10):
        text += '<!ENTITY %% p%d "%s">' % (i, ('&#37;p%d;' % (i - 1)) * 10)
    return text + '%p9;]><r/>'


def pe_external_dtd():
    # In an external subset, references in entity values are expanded into
    # one literal: 8 * 10^9 characters.
    text = '<!ENTITY % a0 "hahahaha">\n'
    for i in range(1, 10):
        text += '<!ENTITY %% a%d "%s">\n' % (i, ('%%a%d;' % (i - 1)) * 10)
    return text + '<!ENTITY big "%a9;">\n'


def quadratic_blowup(size=50000, uses=20000):
    return ('<!DOCTYPE r [<!ENTITY e "%s">]><r>%s</r>' % ('x' * size, '&e;' * uses))


def attribute_blowup(leaf=4000):
    text = '<!DOCTYPE r [<!ENTITY a0 "%s">' % ('x' * leaf)
    for i in range(1, 10):
        text += '<!ENTITY a%d "%s">' % (i, ('&a%d;' % (i - 1)) * 10)
    return text + ']><r a="&a9;"/>'


def wide_attributes(count=200000):
    return '<r %s/>' % ' '.join('a%d="v"' % i for i in range(count))


def namespace_declarations(count=100000):
    return '<r %s/>' % ' '.join('xmlns:p%d="urn:%d"' % (i, i) for i in range(count))


def attlist_defaults(count=100000):
    decls = ''.join('<!ATTLIST r a%d CDATA "v">' % i for i in range(count))
    return '<!DOCTYPE r [%s]><r/>' % decls


def deep_namespaced(depth):
    return '<e xmlns="urn:x">' + '<e>' * (depth - 1) + 'x' + '</e>' * depth


def entity_chain(levels, before, after):
    """Entities each referring to the one before, the last one used."""
    text = '<!DOCTYPE r [<!ENTITY e0 "x">'
    text += ''.join('<!ENTITY e%d "&e%d;">' % (i, i - 1) for i in range(1, levels))
    return text + ']>' + before + '&e%d;' % (levels - 1) + after


def parameter_chain(levels):
    text = '<!DOCTYPE r [<!ENTITY % p0 "<!--x-->">'
    text += ''.join('<!ENTITY %% p%d "&#37;p%d;">' % (i, i - 1) for i in range(1, levels))
    return text + '%%p%d;]><r/>' % (levels - 1)


def entity_declarations(count=100000):
    return '<!DOCTYPE r [%s]><r/>' % ''.join('<!ENTITY e%d "x">' % i for i in range(count))


def notation_declarations(count=100000):
    return '<!DOCTYPE r [%s]><r/>' % ''.join(
        '<!NOTATION n%d SYSTEM "x">' % i for i in range(count))


def element_names(count):
    return '<r>%s</r>' % ''.join('<a%d/>' % i for i in range(count))


def namespace_uris(count=100000):
    return '<r>%s</r>' % ''.join('<a xmlns="urn:%d"/>' % i for i in range(count))


def big_attribute(megabytes=100):
    return '<r a="' + 'x' * (megabytes * 1000000) + '"/>'


def big_name(megabytes=100):
    return '<r' + 'x' * (megabytes * 1000000) + '/>'


def big_comment(megabytes=100):
    return '<r><!--' + 'x' * (megabytes * 1000000) + '--></r>'


def big_text(megabytes=100):
    return '<r>' + 'x' * (megabytes * 1000000) + '</r>'


def defaulted_prefixed_attribute():
    return ('<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED "http://example.org" '
            'tst:att CDATA "1">]><doc att="1"/>')


def second_prefix_same_uri():
    return ('<!DOCTYPE doc [<!ATTLIST doc xmlns:tst CDATA #FIXED "http://example.org" '
            'tst:att CDATA "1">]><doc xmlns:other="http://example.org" other:att="2"/>')


def directory_escape():
    return '<!DOCTYPE r [<!ENTITY s SYSTEM "../outside.ent">]><r>&s;</r>'


# name, builder, paths, short run
DOCUMENTS = [
    ('billion laughs', billion_laughs, ('dom', 'sax'), True),
    ('PE bomb, comment leaf (internal subset)', lambda: pe_bomb('<!--l-->'), ('dom', 'sax'), True),
    ('PE bomb, empty leaf (internal subset)', lambda: pe_bomb(''), ('dom', 'sax'), True),
    ('PE bomb in an external DTD (entity directory)', None, ('dom', 'sax'), True),
    ('quadratic blowup, 50 KB entity x 20000', quadratic_blowup, ('dom', 'sax'), True),
    ('attribute blowup, 10 levels into a value', attribute_blowup, ('dom', 'sax'), True),
    ('10^4-deep entity chain in content', lambda: entity_chain(10000, '<r>', '</r>'),
     ('dom', 'sax'), True),
    ('10^4-deep entity chain in a value', lambda: entity_chain(10000, '<r a="', '"/>'),
     ('dom', 'sax'), True),
    ('10^4-deep parameter entity chain', lambda: parameter_chain(10000), ('dom', 'sax'), True),
    ('2*10^5 attributes on one element', wide_attributes, ('dom', 'sax'), True),
    ('10^5 namespace declarations', namespace_declarations, ('dom', 'sax'), True),
    ('10^5 entity declarations', entity_declarations, ('dom', 'sax'), True),
    ('10^5 notation declarations', notation_declarations, ('dom', 'sax'), True),
    ('10^5 distinct namespace URIs', namespace_uris, ('dom', 'sax'), True),
    ('3*10^5 distinct element names', lambda: element_names(300000), ('dom', 'sax'), True),
    ('10^6 distinct element names', lambda: element_names(1000000), ('dom', 'sax'), False),
    ('10^5 ATTLIST default attributes', attlist_defaults, ('dom', 'sax'), True),
    ('10^5-deep namespaced nesting', lambda: deep_namespaced(100000), ('dom', 'sax', 'resave'), True),
    ('10^6-deep namespaced nesting', lambda: deep_namespaced(1000000), ('dom', 'sax'), False),
    ('34 MB attribute value', lambda: big_attribute(34), ('dom', 'sax'), True),
    ('100 MB attribute value', big_attribute, ('dom', 'sax'), False),
    ('100 MB element name', big_name, ('dom', 'sax'), False),
    ('100 MB comment', big_comment, ('dom', 'sax'), False),
    ('100 MB text content', big_text, ('dom', 'sax'), False),
    ('DTD-defaulted prefixed attribute', defaulted_prefixed_attribute, ('resave',), True),
    ('second prefix on the defaulted URI', second_prefix_same_uri, ('resave',), True),
    ('"../" out of the entity directory', directory_escape, ('dom', 'sax'), True),
]


def write(path, text):
    with open(path, 'w', encoding='utf-8') as out:
        out.write(text)


def generate(work):
    entities = os.path.join(work, 'entities')
    os.makedirs(entities, exist_ok=True)
    write(os.path.join(entities, 'bomb.dtd'), pe_external_dtd())
    # Read only when an id escapes the directory: it makes the document
    # malformed, so an escape shows as a fatal error.
    write(os.path.join(work, 'outside.ent'), '</oops>')
    files = []
    for index, (name, builder, paths, short) in enumerate(DOCUMENTS):
        path = os.path.join(work, 'doc%02d.xml' % index)
        if builder is None:
            write(path, '<!DOCTYPE r SYSTEM "bomb.dtd"><r>&big;</r>')
        else:
            write(path, builder())
        files.append((name, path, paths, short))
    return entities, files


# ---- Running ------------------------------------------------------------------

def cpu_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def run_one(driver, path_kind, document, entities, seconds, address_mb):
    """Runs one path over one document in its own process. The time limit
    is on processor time (the machine may be shared); wall-clock time is
    only guarded against a process that hangs."""
    def limits():
        limit = address_mb * 1024 * 1024
        resource.setrlimit(resource.RLIMIT_AS, (limit, limit))
        cpu = int(seconds + 0.999)
        resource.setrlimit(resource.RLIMIT_CPU, (cpu, cpu + 1))

    before = cpu_seconds()
    process = subprocess.Popen([driver, path_kind, document, str(LIMIT), entities],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               preexec_fn=limits)
    try:
        out, err = process.communicate(timeout=seconds * 20)
    except subprocess.TimeoutExpired:
        process.kill()
        out, err = process.communicate()
    used = cpu_seconds() - before
    line = out.decode('utf-8', 'replace').strip().splitlines()
    if process.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
        return '>%.0f' % seconds, '-', 'killed at the time limit'
    if process.returncode != 0 or not line:
        tail = err.decode('utf-8', 'replace').strip().splitlines()
        reason = tail[-1][:90] if tail else 'exit status %d' % process.returncode
        return '%.2f' % used, '-', 'process died: ' + reason
    fields = line[-1].split('\t', 2)
    return '%.2f' % used, fields[1], compact(fields[2])


def compact(outcome):
    """The outcome without the location part of a DOM message, and without
    the common tail of the limit messages."""
    outcome = re.sub(r"FATAL ERROR: file '[^']*', line '\d+', column '\d+', message ", '', outcome)
    outcome = re.sub(r"; this is the [a-z ]*limit imposed by the application'?", '', outcome)
    return outcome[:120]


MEMORY_BOUND_MB = 200


def failed(seconds, megabytes, outcome):
    """A row that breaks what SECURITY.md promises: killed at the time limit,
    a dead process, more than 200 MB, or a save that does not read back."""
    if seconds.startswith('>') or outcome.startswith('process died'):
        return True
    if megabytes != '-' and float(megabytes) > MEMORY_BOUND_MB:
        return True
    return outcome.startswith('reload') or outcome.endswith('saves differ')


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('--driver', required=True)
    parser.add_argument('--work', required=True)
    parser.add_argument('--short', action='store_true')
    parser.add_argument('--check', action='store_true')
    parser.add_argument('--seconds', type=float, default=10.0)
    parser.add_argument('--address-mb', type=int, default=4096)
    args = parser.parse_args()

    entities, files = generate(args.work)
    failures = []
    print('| Document | Path | Processor time (s) | Peak memory above the start (MB) | Outcome |')
    print('|---|---|---|---|---|')
    for name, document, paths, short in files:
        if args.short and not short:
            continue
        for path_kind in paths:
            seconds, megabytes, outcome = run_one(args.driver, path_kind, document, entities,
                                                  args.seconds, args.address_mb)
            outcome = outcome.replace('|', '/')
            print('| %s | %s | %s | %s | %s |' % (name, path_kind, seconds, megabytes, outcome))
            sys.stdout.flush()
            if failed(seconds, megabytes, outcome):
                failures.append('%s (%s)' % (name, path_kind))
    if args.check and failures:
        print('\nFailed: ' + ', '.join(failures))
        sys.exit(1)


if __name__ == '__main__':
    main()
