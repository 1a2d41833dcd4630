#!/usr/bin/env python3
"""Runs all benchmarks and prints a table of ratios. Usage: report.py FOLDER-OF-PROGRAMS [--short]

Each ratio is made within one run, on one machine. Status 1 if something does not run; never because of a time.
"""
import json
import math
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAMS = os.path.abspath(sys.argv[1])
SHORT = '--short' in sys.argv


def run(command, output=subprocess.PIPE):
    done = subprocess.run(command, stdout=output, stderr=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f'bench: {" ".join(command)}: expected status 0, found {done.returncode}: {done.stderr.strip()}')
    return done.stdout


def program(name):
    return os.path.join(PROGRAMS, name)


def google(name):
    """@return nanoseconds by benchmark, the least of some repetitions: what others do on the machine only adds to it"""
    timing = ['--benchmark_min_time=0.01']
    if not SHORT:
        timing = ['--benchmark_repetitions=9', '--benchmark_enable_random_interleaving=true']
    out = os.path.join(PROGRAMS, name + '.json')
    # Not through a pipe: the logger asks at its start what it writes to.
    run([program(name), '--benchmark_out=' + out, '--benchmark_out_format=json'] + timing, subprocess.DEVNULL)
    times = {}
    with open(out, encoding='utf-8') as file:
        for result in json.load(file)['benchmarks']:
            if result['run_type'] == 'iteration':
                name = result['run_name']
                times[name] = min(times.get(name, math.inf), result['real_time'])
    return times


def row(what, value, against, bar=''):
    print(f'{what:52} {value:>14}   {against}{"   (bar: " + bar + ")" if bar else ""}', flush=True)


def prefix():
    times = google('velloran_bench_prefix')
    for verb in ('Encode', 'Decode'):
        for size in range(1, 6):
            own, stream = times[f'{verb}Prefix/{size}'], times[f'{verb}PrefixByProtobuf/{size}']
            row(f'{verb.lower()} a prefix of {size} bytes', f'{own:.1f} ns', f'{own / stream:.2f} of protobuf\'s stream',
                'at most 1')
        if verb == 'Encode':
            ratio = times['EncodePrefix/2'] - times['EncodePrefixByProtobufInline/2']
            row('the same against protobuf\'s inlined static function', f'+{ratio:.1f} ns', 'two bytes, no stream, no call')


def log():
    times = google('velloran_bench_log')
    own = times['LogOneLine']
    row('one log line to a file', f'{own:.0f} ns', f'{own / times["LogOneLineBySpdlog"]:.2f} of spdlog flushing each line',
        'below 1')
    row('', '', f'{own / times["WriteOneLine"]:.2f} of a bare write', 'at most 1.5')
    syslog = times['LogOneLineToSyslogAsWell']
    row('the same, offered to the syslog as well', f'{syslog:.0f} ns', f'{syslog / times["LogOneLineBySpdlog"]:.1f} of spdlog')


def dialogue():
    times = google('velloran_bench_dialogue')
    own, bare, logging = times['HandleMessages'], times['ParseAndPrint'], times['HandleMessagesLoggingAll']
    row('HandleMessage, an export of 14 messages, mask 0', f'{own / 1000:.1f} us', f'{own / bare:.2f} of parse and print',
        'at most 1.3')
    row('the same with all logging', f'{logging / 1000:.1f} us', f'{logging / own:.1f} times as long')


def one_list(who, dialect, events):
    return [float(field) for field in run([program('velloran_bench_list'), who, dialect, str(events)]).split()]


def lists():
    for dialect, name, many in (('1', 'XML', 100_000), ('2', 'EVENT_LIST', 1_000_000)):
        many = many // 100 if SHORT else many
        few = many // 100
        rounds = 1 if SHORT else 7
        costs = {(who, count): [] for who in ('harness', 'tinyxml') for count in (few, many)}
        memory = {}
        for _ in range(rounds):
            for who, count in costs:
                seconds, size, peak = one_list(who, dialect, count)
                costs[who, count].append(seconds / count)
                memory[who, count] = peak / size
        cost = {key: min(values) for key, values in costs.items()}
        for who in ('harness', 'tinyxml'):
            growth = cost[who, many] / cost[who, few]
            row(f'{name} of {many} events, {who}', f'{cost[who, many] * 1e9:.0f} ns/event',
                f'{growth:.2f} of the cost at {few}; peak {memory[who, many]:.1f} bytes per byte',
                'at most 1.1' if who == 'harness' else '')


def export():
    world = os.path.join(HERE, '..', 'scripts', 'world')
    script = os.path.join(HERE, 'export', 'export.py')
    for dialect in ('1', '2'):
        for option in ([], ['--quick-acknowledgement']):
            result = json.loads(run([world, *option, script, program('velloran'), program('velloran-rig'), dialect]))
            rest = result['wall'] - result['pauses']
            row(f'an export in dialect {dialect}.0{", peer acknowledges at once" if option else ""}',
                f'{result["wall"]:.3f} s',
                f'{rest / result["pauses"] * 100:.1f} % above its pauses, {rest / result["requests"] * 1000:.1f} ms a frame',
                'at most 1 %' if option else '')


def start():
    rounds = '1' if SHORT else '25'
    result = json.loads(run([os.path.join(HERE, '..', 'scripts', 'world'), os.path.join(HERE, 'start', 'start.py'), program('velloran'),
                             rounds]))
    own = result['velloran']
    row('start to listening', f'{own["seconds"] * 1000:.1f} ms',
        ', '.join(f'{name} {result[name]["seconds"] * 1000:.1f} ms' for name in ('socat', 'python')), 'before both')
    row('resident then', f'{own["kilobytes"] / 1024:.1f} MiB',
        ', '.join(f'{name} {result[name]["kilobytes"] / 1024:.1f} MiB' for name in ('socat', 'python')), 'before both')


for part in (prefix, log, dialogue, lists, export, start):
    part()
