#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes postgresql_cases.tsv: generated documents and paths, with what PostgreSQL's jsonb_path_query_array gives for them, or "error".

    tests/json/postgresql_cases.py [count] > tests/json/postgresql_cases.tsv

Starts a server of its own in a temporary folder; needs Debian's postgresql-15. Documents are written as jsonb shows them, but for white space:
short members in order, numbers without exponents."""
import glob
import os
import random
import shutil
import subprocess
import sys
import tempfile

draw = random.Random(16)


def scalar():
    return draw.choice(['0', '1', '2', '-1', '2.50', '10', '12345678901234567890.5', '"x"', '"abc"', '"10"', '"2.5"', '"é"', '"ab\\tc"', '""',
                        'true', 'false', 'null'])


def document(depth=3):
    kind = draw.random()
    if depth == 0 or kind < 0.2:
        return scalar()
    if kind < 0.55:
        return '[' + ','.join(document(depth - 1) for _ in range(draw.randint(0, 4))) + ']'
    keys = sorted(draw.sample('abcd', draw.randint(0, 3)))
    return '{' + ','.join(f'"{key}":{document(depth - 1)}' for key in keys) + '}'


def position():
    return draw.choice(['0', '0', '1', '2', '3', 'last', 'last - 1', 'last - 3'] + ['last / 2', '$.b', '1 + 1', '@.a', '1.9', '-1'] * (draw.random() < 0.2))


def subscript():
    return draw.choice([position(), position(), f'{position()} to {position()}', f'{position()}, {position()}'])


def literal():
    return draw.choice(['0', '1', '2', '2.5', '1e1', '-1', '12345678901234567890.4', '"x"', '"abc"', '"10"', '"ab\\tc"', '"\\u00e9"', 'true', 'false', 'null'])


def pattern():
    text = draw.choice(['^a', 'b$', 'A', '.', '^$', 'a.*c', '[0-9]+', '(a|x)', 'B\\\\t', 'é', '^1'])
    return f'"{text}"' + draw.choice(['', '', '', ' flag "i"', ' flag "q"', ' flag "s"', ' flag "im"'])


def arithmetic(depth):
    """Quotients are compared only: the numbers of digits differ."""
    a, b = (draw.choice(['2', '-3', '0', '1.5', '(@.a)', '@', '@', '@.b', '$.a']) for _ in range(2))
    return draw.choice([f'{a} + {b}', f'{a} - {b}', f'{a} * {b}', f'{a} / {b}', f'{a} % {b}', f'-{a}', f'+{a}', f'{a} + {b} * 2', f'({a} - {b}) % 2'])


def operand(depth):
    if draw.random() < 0.15:
        return arithmetic(depth)
    return draw.choice(['@', '@', '@', '$']) + steps(draw.randint(0, 2), depth) if draw.random() < 0.8 else literal()


def predicate(depth):
    kind = draw.random()
    if depth > 0 and kind < 0.15:
        return f'({predicate(depth - 1)}) && ({predicate(depth - 1)})'
    if depth > 0 and kind < 0.3:
        return f'{predicate(0)} || {predicate(0)}'
    if depth > 0 and kind < 0.4:
        return f'!({predicate(depth - 1)})'
    if depth > 0 and kind < 0.5:
        return f'({predicate(depth - 1)}) is unknown'
    if kind < 0.65:
        return f'exists(@{steps(draw.randint(1, 2), depth)})'
    if kind < 0.70:
        return f'@{steps(draw.randint(0, 1), 0)} like_regex {pattern()}'
    if kind < 0.74:
        return f'@{steps(draw.randint(0, 1), 0)} starts with "{draw.choice(["a", "ab", "", "1"])}"'
    return f'{operand(depth)} {draw.choice(["==", "!=", "<>", "<", "<=", ">", ">="])} {operand(0) if draw.random() < 0.3 else literal()}'


def steps(count, depth):
    text = ''
    for _ in range(count):
        kind = draw.random()
        if kind < 0.4:
            text += draw.choice(['.a', '.b', '.c', '."d"', '."a"', '. b'])
        elif kind < 0.5:
            text += '.*'
        elif kind < 0.62:
            text += '[*]'
        elif kind < 0.8:
            text += f'[{subscript()}]'
        elif kind < 0.93 and depth > 0:
            text += f' ? ({predicate(depth - 1)})'
        else:
            text += draw.choice(['.type()', '.size()', '.double()', '.abs()', '.ceiling()', '.floor()', '.keyvalue().key', '.keyvalue().value',
                                 '.**', '.**.**', '.**{1}', '.**{0 to 1}', '.**{last}', '.**{1 to last}'])
    return text


def whole_path():
    chain = '$' + steps(draw.randint(1, 4), 2)
    kind = draw.random()
    if kind < 0.8:
        return chain
    other = draw.choice(['2', '-1', '1.50', '$.a', '$[0]'])
    return draw.choice([f'{chain} + {other}', f'{other} - {chain}', f'{chain} * {other}', f'{chain} % {other}', f'-{chain}', f'({chain}).type()',
                        f'{chain} > {other}', f'({chain} == {other}).type()', f'exists({chain})', f'({chain} < {other}) is unknown'])


def compact(text):
    """Without the white space that is not in strings."""
    result, in_string, escaped = '', False, False
    for character in text:
        if in_string or not character.isspace():
            result += character
        if character == '"' and not escaped:
            in_string = not in_string
        escaped = character == '\\' and not escaped
    return result


def ask(cases):
    programs = glob.glob('/usr/lib/postgresql/*/bin')[-1]
    as_user = ['setpriv', '--reuid=postgres', '--regid=postgres', '--clear-groups'] if os.getuid() == 0 else []
    folder = tempfile.mkdtemp(prefix='json_cases_')
    if as_user:
        shutil.chown(folder, 'postgres', 'postgres')
    run = lambda *command, **more: subprocess.run([*as_user, *command], check=True, cwd='/', **more)
    quiet = {'stdout': subprocess.DEVNULL, 'stderr': subprocess.DEVNULL}
    try:
        run(f'{programs}/initdb', '-D', f'{folder}/data', '-E', 'UTF8', '--no-locale', '--no-sync', **quiet)
        run(f'{programs}/pg_ctl', '-D', f'{folder}/data', '-w', '-o', f"-k {folder} -c listen_addresses=''", 'start', **quiet)
        try:
            script = '''create function answer(d text, p text) returns text language plpgsql as $f$
                begin return jsonb_path_query_array(d::jsonb, p::jsonpath)::text; exception when others then
                return case when sqlstate = '42601' then 'syntax' else 'error' end; end $f$;\n'''
            for text, path in cases:
                script += f'select answer($d${text}$d$, $d${path}$d$);\n'
            answers = run(f'{programs}/psql', '-h', folder, '-qAtX', 'postgres', input=script, capture_output=True, text=True).stdout
        finally:
            run(f'{programs}/pg_ctl', '-D', f'{folder}/data', '-m', 'immediate', 'stop', **quiet)
    finally:
        shutil.rmtree(folder)
    return answers.splitlines()


def main():
    wanted = int(sys.argv[1]) if len(sys.argv) > 1 else 2000
    cases = []
    while len(cases) < 5 * wanted:
        case = (document(), draw.choice(['', '', 'lax ', 'strict ']) + whole_path())
        if case not in cases:
            cases.append(case)
    # Most give nothing: a quarter of the table is enough of these, and of errors.
    left = {'[]': wanted // 4, 'error': wanted // 4}
    for (text, path), answer in zip(cases, ask(cases), strict=True):
        if left.setdefault(answer, wanted) > 0 and wanted > 0:
            left[answer] -= 1
            wanted -= 1
            print(text, path, compact(answer), sep='\t')


main()
