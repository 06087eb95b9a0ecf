#!/usr/bin/env bash
# CPU time (user and system) of `use` and `save` of N observations of 12
# doubles, for one or two Korvu builds, from batch runs: a run doing R `use`s
# less a run doing one, over R-1; a run doing one `use` and R `save`s less
# the run doing one `use`, over R. Each run twice, the lower figure kept.
# The file is made by the first build itself.
# Usage: bench/use_save.sh N build [build-before]   (prints a markdown table)
set -euo pipefail
N=${1:-10000000}
exes=("$(cd "${2:-build}/bin" && pwd)/korvu-xe")
[ $# -ge 3 ] && exes+=("$(cd "$3/bin" && pwd)/korvu-xe")
R=3
work=$(mktemp -d /tmp/usebench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mem="set memory $((N / 9000 + 64))m"
{
    echo "$mem"
    echo "set obs $N"
    for j in $(seq 1 12); do echo "generate double v$j = uniform()"; done
    echo "save big"
} >mk.do
"${exes[0]}" -q -b do mk.do
# user and system seconds of one batch run of the do-file body $2
cpu() {
    printf '%s\n%s\n' "$mem" "$2" >b.do
    /usr/bin/time -f '%U %S' -o t.txt "$1" -q -b do b.do >/dev/null
    grep -q 'r(' b.log && { echo "failed: $2" >&2; exit 1; }
    cat t.txt
}
best() { # lowest user+sys of two runs: "user sys"
    local a b
    a=$(cpu "$1" "$2")
    b=$(cpu "$1" "$2")
    awk -v a="$a" -v b="$b" 'BEGIN{split(a,x," ");split(b,y," ");
        if (x[1]+x[2] <= y[1]+y[2]) print a; else print b}'
}
uses=$(for _ in $(seq 1 $R); do echo "use big, clear"; done)
saves=$(for _ in $(seq 1 $R); do echo "save out, replace"; done)
echo "| build | use user [s] | use sys [s] | save user [s] | save sys [s] |"
echo "|---|---:|---:|---:|---:|"
for exe in "${exes[@]}"; do
    one=$(best "$exe" "use big")
    many=$(best "$exe" "$uses")
    sv=$(best "$exe" "use big
$saves")
    awk -v e="$exe" -v o="$one" -v m="$many" -v s="$sv" -v r=$R 'BEGIN{
        split(o,a," "); split(m,b," "); split(s,c," ");
        printf "| %s | %.3f | %.3f | %.3f | %.3f |\n", e,
            (b[1]-a[1])/(r-1), (b[2]-a[2])/(r-1), (c[1]-a[1])/r, (c[2]-a[2])/r}'
done
