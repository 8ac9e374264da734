#!/usr/bin/env bash
# examples_test.sh SOURCE ORX HOST C_HOST CONTAINERS: the sample suite is complete, the files of the pit are those that
# its script and orx write, and the example hosts run and are those in the README.
set -euo pipefail
source=$1 orx=$2 host=$3 c_host=$4 containers=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$source/examples/suite/drives" "$work"
export ORX_DRIVES=$work/drives

for project in 'C:\Projects\Kestrel Ridge\North Pit\north_pit.qpr' 'C:\Projects\Gruental\Stollen 4\stollen_4.qpr'; do
  "$orx" list show 'C:\Projects\projects.qpl' | grep -F "$project"
  "$orx" project verify "$project"
  "$host" "$project"
  "$orx" project show "$project" | grep '^VersionState *current$'
done
! "$host" 'C:\Projects\missing.qpr' || exit 1
[ "$("$c_host")" = "'PIT 1'" ]
diff <("$containers") - << 'END'
refused: there is a sample at 3.0 m
by depth
   0.0 m   0.12 g/t
   1.5 m   1.31 g/t
   3.0 m   0.85 g/t
   4.5 m   2.40 g/t
by grade
   4.5 m   2.40 g/t
   1.5 m   1.31 g/t
   3.0 m   0.85 g/t
   0.0 m   0.12 g/t
END

"$source/examples/pit/make_pit.sh" | cmp - "$source/examples/pit/pit.obj"
read -r plane < <(sed -n 's/^ .*pit\.obj --plane \([^ ]*\) .*/\1/p' "$source/README.md")
"$orx" section "$source/examples/pit/pit.obj" --plane "$plane" --svg "$work/section.svg"
cmp "$work/section.svg" "$source/examples/pit/section.svg"

snippet() { awk -v fence="\`\`\`$1" '$0 == fence { inside = 1; next } /^```$/ { inside = 0 } inside' "$source/README.md"; }
diff <(snippet cpp) "$source/examples/host.cpp"
diff <(snippet c) "$source/examples/c_host.c"
