#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Real programs on the memory service.
#
#   programs.sh check LIBRARY               runs each plainly and on the library, and compares what they print
#   programs.sh measure TOOL LIBRARY…       has the tool run each on every library in turn, and plainly
#   programs.sh run PROGRAM                 runs one
set -euo pipefail

programs="perl sqlite python g++ git xz churn"
here=$(cd "$(dirname "$0")" && pwd)
scale=${MOVA_PROGRAMS_SCALE:-1}

run_perl() {
    perl -e 'my $n = 60000 * shift; my %h; srand 7;
        push @{$h{int rand 5000}}, join ",", map { $_ * 3 } $_ % 50 .. $_ % 50 + 9 for 1 .. $n;
        my $text = join "\n", map { "$_: @{$h{$_}}" } sort keys %h;
        $text =~ s/(\d+),(\d+)/$2-$1/g; my %count; $count{$_}++ for split /\W+/, $text;
        print "$_ $count{$_}\n" for sort keys %count' "$scale"
}

run_sqlite() {
    sqlite3 :memory: "create table t(a integer primary key, b text, c blob);
        with recursive n(i) as (select 1 union all select i + 1 from n where i < 60000 * $scale)
        insert into t select i, printf('%09d', i * 7919 % 1000003), zeroblob(i % 400) from n;
        create index by_b on t(b); delete from t where a % 3 = 0; update t set b = b || 'x' where a % 5 = 0;
        select count(*), min(b), max(b), sum(length(c)) from t;
        select substr(b, 1, 4) as k, count(*), group_concat(a % 10, '') from t group by k order by k;"
}

run_python() {
    PYTHONMALLOC=malloc PYTHONHASHSEED=0 python3 -S -c 'import sys, json, re
n = 20000 * int(sys.argv[1])
rows = [{"id": i, "name": "n%d" % (i * 7919 % n), "parts": list(range(i % 20))} for i in range(n)]
text = json.dumps(rows)
back = {row["name"]: row for row in json.loads(text)}
words = re.findall(r"n\d+", text)
print(len(text), len(back), len(set(words)), sum(len(row["parts"]) for row in back.values()))
for name in sorted(back)[:2000]: print(name, back[name])' "$scale"
}

run_g++() {
    g++ -std=c++20 -O1 -S -o - -I"$here/../.." "$here/../../mova/host/memory.cpp"
}

run_git() {
    local folder
    folder=$(mktemp -d)
    git -C "$folder" init -q
    perl -e 'my $n = 40 * shift; my @lines = map { "line $_\n" } 1 .. 2000; my $time = 1000000000;
        for my $i (1 .. $n) {
            $lines[$i * 37 % 2000] = "changed in $i\n"; my $data = join "", @lines;
            print "commit refs/heads/main\nmark :$i\ncommitter A <a\@b> ", $time + $i, " +0000\ndata 4\nstep\n",
                $i > 1 ? "from :" . ($i - 1) . "\n" : "", "M 644 inline file\ndata ", length $data, "\n$data\n";
        }' "$scale" | git -C "$folder" fast-import --quiet
    git -C "$folder" repack -q -a -d -f --threads=1
    git -C "$folder" log -p main
    git -C "$folder" blame main -- file
    rm -rf "$folder"
}

run_xz() {
    perl -e 'srand 7; print join(" ", map { int rand 1000 } 1 .. 9), "\n" for 1 .. 60000 * shift' "$scale" | xz -6 -T1 -c
}

# Values of random sizes come and go, as in a store of keys; in the end all go.
run_churn() {
    perl -e 'srand 7; my ($n, @store) = 400000 * shift;
        for (1 .. $n) { $store[rand 50000] = chr(65 + $_ % 26) x (8 + rand(rand 2000)); }
        my $bytes = 0; $bytes += length($_ // "") for @store; print "$bytes\n"; @store = (); print "flushed\n"' "$scale"
}

check() {
    local library=$1 program
    local folder
    folder=$(mktemp -d)
    for program in $programs; do
        "$0" run "$program" >"$folder/plain"
        LD_PRELOAD=$library "$0" run "$program" >"$folder/own"
        [ -s "$folder/plain" ]
        cmp "$folder/plain" "$folder/own" || { echo "$program prints something else on $library"; exit 1; }
        echo "$program: the same $(wc -c <"$folder/own") bytes"
    done
    rm -rf "$folder"
}

case ${1:-} in
run) "run_$2" ;;
check) check "$2" ;;
measure)
    tool=$2
    shift 2
    for program in $programs; do
        "$tool" "$program" "$@" -- "$0" run "$program"
    done
    ;;
*) sed -n '2,6s/^# \{0,1\}//p' "$0" && exit 1 ;;
esac
