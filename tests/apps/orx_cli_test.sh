#!/usr/bin/env bash
# orx_cli_test.sh ORX: what the command-line host answers. A row is the exit status, patterns that the whole of standard
# output and standard error match, and the arguments.
set -uo pipefail
orx=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/Süd Feld/Grube 1" "$work/c/Projects/Pit 2"
cd "$work/Süd Feld/Grube 1" || exit 1
export ORX_DRIVES=$work
failures=0

fail() {
  printf '%s\n' "$@" >&2
  failures=$((failures + 1))
}

row() {
  local status=$1 out_pattern=$2 err_pattern=$3 out err actual
  shift 3
  out=$("$orx" "$@" 2> "$work/err")
  actual=$?
  err=$(cat "$work/err")
  # shellcheck disable=SC2053  # the right sides are patterns
  [[ $actual == "$status" && $out == $out_pattern && $err == $err_pattern ]] ||
    fail "orx $* (expected $status, '$out_pattern', '$err_pattern')" "  status: $actual" "  stdout: $out" "  stderr: $err"
}

unchanged() { # FILE COMMAND...: the command leaves the file, or its absence, as it was
  local file=$1 before
  shift
  before=$(cat "$file" 2>&1)
  "$@"
  [[ $(cat "$file" 2>&1) == "$before" ]] || fail "orx changed $file: $*"
}

jet=(SiteName='Süd Feld' SiteDatabase=site.mdb SiteDatabasePlatform='access 2007' ProjectName='Grube 1' DataGroupName=Alle)
sql=(SiteName=Ost SiteDatabase=OstSite SiteDatabasePlatform=SQL2019 SiteDatabaseServerName='S\1' ProjectName=P DataGroupName=D)

row 0 'orx 6.*' '' --version
row 0 '*Usage: orx project new*' '' project new --help
row 2 '' 'orx: A subcommand is required*'
row 2 '' 'orx: FILE is required*' project show
row 2 '' "orx: *'SiteName' is not NAME=VALUE*" project set a.qpr SiteName
row 2 '' 'orx: *' list default all.qpl ''
row 2 '' 'orx: *' list default all.qpl A --none

row 0 '' '' project new 'jét 1.qpr' "${jet[@]}"
row 1 '' 'orx: jét 1.qpr: the file exists*' project new 'jét 1.qpr' "${jet[@]}"
row 0 '' '' project new --force 'jét 1.qpr' "${jet[@]}" Description='Süd & "Nord" <1>'
row 0 '' '' project new sql.qpr "${sql[@]}" MajorVersion=6 MinorVersion=6 ReleaseVersion=99
row 1 '' "orx: /folder/a.qpr: a project file needs*" project new /folder/a.qpr "${jet[@]}"
unchanged bad.qpr row 1 '' 'orx: bad.qpr: The site name cannot be empty.' project new bad.qpr ProjectName=P

# project set: all settings or none
refused() { unchanged 'jét 1.qpr' row 1 '' "orx: jét 1.qpr: $1" project set 'jét 1.qpr' Coordinates=changed "$2"; }
refused "a project has no property 'Bogus'" Bogus=1
refused 'SiteName takes 50 bytes at most, not 51' "siteNAME=$(printf 'x%.0s' {1..51})"
refused "SiteDatabasePlatform takes a name*'SQL2'" SiteDatabasePlatform=SQL2
refused "MajorVersion takes a whole number, not '6x'" MajorVersion=6x
refused "ReleaseVersion takes a whole number, not '99999999999'" ReleaseVersion=99999999999
refused 'The project name cannot be empty' ProjectName=
row 0 '' '' project set 'jét 1.qpr' coordinates='a=b' "SiteDatabase=$work/elsewhere/new.mdb" RELEASEVERSION=-3

suite=${PWD//\//\\\\} # as a pattern
row 0 "File                    $suite\\\\jét 1.qpr
SiteName                Süd Feld
SiteDatabase            $suite\\\\new.mdb
SiteDatabasePlatform    ACCESS 2016
*Grube 1*Alle*a=b*Süd & \"Nord\" <1>*6*7*-3*Access 2016*JET*8*VersionState            current
ProjectBasePath         ${suite%\\\\*}
SiteProjectDatagroup    \\\\Süd Feld\\\\Grube 1\\\\Alle\\\\" '' project show 'jét 1.qpr'
row 0 '{*"SiteName": "Ost",*"MinorVersion": 6,*"PlatformType": "SQL",*"VersionState": "older",*}' '' project show sql.qpr --json
row 1 '' 'orx:  : the name of a file cannot end in white space' project show ' '

# a file that does not verify is shown, told and not written
cat > broken.qpr << 'XML'
<QPR><PROJECT><PROPERTY NAME="SiteName" VALUE="a&#10;b&#127;c"/>
<PROPERTY NAME="SiteDatabasePlatform" VALUE="later"/><PROPERTY NAME="MajorVersion" VALUE="7"/></PROJECT></QPR>
XML
row 0 '*SiteName                a b c*SiteDatabasePlatform    -*PlatformId              -1*newer*' '' project show broken.qpr
row 1 '{*"Valid": false,*"Reason": "The database*}' 'orx: broken.qpr: The *' project verify --json broken.qpr
unchanged broken.qpr row 1 '' 'orx: broken.qpr: The *' project set broken.qpr Coordinates=c
echo '<QPR>' > torn.qpr
row 1 '{*"Reason": "?*"*}' 'orx: torn.qpr: ?*' project verify --json torn.qpr
row 1 $'{*"File": "\uFFFD"*}' $'orx: \xff: *' project verify --json $'\xff'
row 0 'sql.qpr: valid' '' project verify sql.qpr
row 0 '{*"Valid": true,*"Reason": null*}' '' project verify --json sql.qpr

row 0 '' '' project upgrade sql.qpr
row 0 '*MinorVersion            7*ReleaseVersion          0*current*' '' project show sql.qpr
row 0 '' '' project set sql.qpr MinorVersion=8
unchanged sql.qpr row 1 '' 'orx: sql.qpr: the project is of a newer version' project upgrade sql.qpr

# lists, and paths with a drive
row 0 '' '' project new 'C:\Projects\Pit 2\p.qpr' "${sql[@]}"
row 0 '' '' list add 'C:\Projects\all.qpl' ' beta ' 'C:\Projects\Pit 2\p.qpr'
row 0 '' '' list add ../../c/Projects/all.qpl Grün "jét 1.qpr" --default
row 0 "Name  Default  Path
Grün  \\*        $suite\\\\jét 1.qpr
beta           C:\\\\Projects\\\\Pit 2\\\\p.qpr" '' list show 'C:\Projects\all.qpl'
ln -s "$work/c/Projects/all.qpl" all.qpl
row 0 '\[*"Name": "Grün",*"Default": true,*"Name": "beta",*"Default": false,*\]' '' list show all.qpl --json
row 1 '' "orx: all.qpl: lists no project 'Beta'" list default all.qpl Beta
row 1 '' "orx: all.qpl: the default project 'Grün' cannot be removed" list remove all.qpl Grün
row 0 '' '' list default all.qpl beta
row 0 '{*"Default": "beta"*}' '' list default all.qpl --json
row 0 '' '' list default all.qpl --none
row 0 '' '' list remove all.qpl Grün
row 0 '' '' list remove all.qpl beta
row 1 '' "orx: all.qpl: lists no project 'beta'" list remove all.qpl beta
row 0 '\[\]' '' list show all.qpl --json
row 0 '' '' list add all.qpl show list # names of subcommands
row 1 '' 'orx: all.qpl: the name of a project cannot be blank' list add all.qpl ' ' p.qpr
unchanged all.qpl row 1 '' 'orx: all.qpl: *UTF-8*' list add all.qpl $'A\xff' p.qpr
unchanged torn.qpr row 1 '' 'orx: torn.qpr: ?*' list add torn.qpr A p.qpr

row 0 'LongName         ShortName    Id  Type  Creatable  Latest
Access 2016      ACCESS 2016  8   JET   \*          \*
*
Jet 4            JET4         3   JET' '' platforms
row 0 '\[*"Id": 8,*"Type": "JET",*"Creatable": true,*"Latest": true*\]' '' platforms --json

# a write that fails is told, whether in the commit or before, and leaves the file
unlimited=$orx
limited() (ulimit -Sf 1 && exec "$unlimited" "$@") # KiB
for size in 2000 100000; do
  orx=limited unchanged all.qpl row 1 '' 'orx: all.qpl: File too large' list add all.qpl "$(printf "A%${size}s" B)" p.qpr
done
err=$("$orx" platforms 2>&1 > /dev/full)
[[ $? == 1 && $err == 'orx: standard output: '* ]] || fail "a full disk: $err"
{ "$orx" platforms 2> "$work/err"; echo $? > "$work/status"; } | true
[[ $(cat "$work/status") == 0 || ($(cat "$work/status") == 1 && -s $work/err) ]] || fail "a reader that left: $(cat "$work/err")"
[[ -z $(find "$work" -name '*.tmp*' -o -name '.*.qp?*') ]] || fail 'temporary files are left'

exit $((failures > 0))
