#!/ usr / bin / env bash
#orx_cli_test.sh ORX : what the command - line host answers.A row is the exit status, \
    patterns that the whole of standard
#output and standard error match, and the arguments.
set - uo pipefail program = $1 orx = $program work =
    $(mktemp - d) trap 'rm -rf "$work"' EXIT mkdir - p
        "$work/Süd Feld/Grube 1"
        "$work/c/Projects/Pit 2" cd "$work/Süd Feld/Grube 1" ||
    exit 1 export ORX_DRIVES = $work ORX_USER_REGISTRY = $work / user.db ORX_MACHINE_REGISTRY =
                                                             $work / machine.db PUBLIC = $work / public USER =
                                                                                             ann failures = 0

    fail(){printf '%s\n' "$@" > & 2 failures = $((failures + 1))}

row(){local status = $1 out_pattern = $2 err_pattern = $3 out err actual shift 3 out =
          $("$orx"
            "$@" 2 > "$work/err") actual =
              $ ? err = $(cat "$work/err")
#shellcheck disable = SC2053 #the right sides are patterns
                            [[$actual == "$status" && $out == $out_pattern && $err == $err_pattern]] ||
                        fail
                        "orx $* (expected $status, '$out_pattern', '$err_pattern')"
                        "  status: $actual"
                        "  stdout: $out"
                        "  stderr: $err" }

                  unprivileged() {
#ARGUMENTS : runs the host so that file permissions apply to root, too if[[$(id - u) == 0]];
  then setpriv-- bounding - set = -all-- inh - caps = -all
                                                      "$program"
                                                      "$@";
  else "$program"
       "$@";
  fi
}

unchanged(){
  #FILE COMMAND... : the command leaves the file,
  or its absence,
  as it was local file = $1 before shift before = $(cksum "$file" 2 > &1) "$@"
                                                  [[$(cksum "$file" 2 > &1) == "$before"]] ||
                                                  fail "orx changed $file: $*"
}

jet = (SiteName = 'Süd Feld' SiteDatabase = site.mdb SiteDatabasePlatform = 'access 2007' ProjectName =
           'Grube 1' DataGroupName = Alle) sql =
    (SiteName = Ost SiteDatabase = OstSite SiteDatabasePlatform = SQL2019 SiteDatabaseServerName =
         'S\1' ProjectName = P DataGroupName = D)

        row 0 'orx 6.*' '' --version row 0 '*Usage: orx project new*' '' project new --help row
    2 '' 'orx: A subcommand is required*' row 2 '' 'orx: FILE is required*' project show row
    2 '' "orx: *'SiteName' is not NAME=VALUE*" project set a.qpr SiteName row 2 '' 'orx: *' list
    default all.qpl '' row 2 '' 'orx: *' list default all.qpl A-- none

    row 0 '' '' project new 'jét 1.qpr' "${jet[@]}" row 1 '' 'orx: jét 1.qpr: the file exists*' project
    new 'jét 1.qpr' "${jet[@]}" row 0 '' '' project new --force
    'jét 1.qpr' "${jet[@]}" Description = 'Süd & "Nord" <1>' row 0 '' '' project new sql.qpr
                                          "${sql[@]}" MajorVersion = 5 MinorVersion = 9 ReleaseVersion =
        99 row 1 '' "orx: /folder/a.qpr: a project file needs*" project new / folder /
        a.qpr
        "${jet[@]}" unchanged bad.qpr row 1 '' 'orx: bad.qpr: The site name cannot be empty.' project
        new bad.qpr ProjectName = P
#project set : all settings or none
    refused() {
  unchanged 'jét 1.qpr' row 1 '' "orx: jét 1.qpr: $1" project set 'jét 1.qpr' Coordinates = changed "$2";
}
refused "a project has no property 'Bogus'" Bogus =
    1 refused 'SiteName takes 50 characters at most, not 51' "siteNAME=$(printf 'x%.0s' {1..51})" refused
                                                             "SiteDatabasePlatform takes a "
                                                             "name*'SQL2'" SiteDatabasePlatform = SQL2 refused
    "MajorVersion takes a whole number, not '6x'" MajorVersion =
        6x refused "ReleaseVersion takes a whole number, not '99999999999'" ReleaseVersion =
            99999999999 refused 'The project name cannot be empty' ProjectName =
                row 0 '' '' project set 'jét 1.qpr' coordinates =
                    'a=b' "SiteDatabase=$work/elsewhere/new.mdb" RELEASEVERSION = -3

                                                                                  suite = $ {
  PWD  //\//\\\\} # as a pattern
      row 0 "File                    $suite\\\\jét 1.qpr
      SiteName Süd Feld SiteDatabase $suite\\\\new.mdb SiteDatabasePlatform ACCESS 2016 * Grube 1 * Alle* a =
      b* Süd& \"Nord\" <1>*6*7*-3*Access 2016*JET*8*VersionState            current
      ProjectBasePath ${suite %\\\\* } SiteProjectDatagroup    \\\\Süd
          Feld\\\\Grube 1\\\\Alle\\\\" '' project show 'jét 1.qpr'
      row 0 '{*"SiteName": "Ost",*"MinorVersion": 9,*"PlatformType": "SQL",*"VersionState": "older",*}' '' project
          show sql.qpr-- json row 1 '' 'orx:  : the name of a file cannot end in white space' project show ' '
#a file that does not verify is shown, told and not written
      cat > broken.qpr << 'XML' <
      QPR >
      <PROJECT><PROPERTY NAME = "SiteName" VALUE = "a&#10;b&#127;c" />
      <PROPERTY NAME = "SiteDatabasePlatform" VALUE = "later" /><PROPERTY NAME = "MajorVersion" VALUE = "7" />
      </ PROJECT></ QPR> XML
          row 0 '*SiteName                a b c*SiteDatabasePlatform    -*PlatformId              -1*newer*' '' project
              show broken
                  .qpr row 1 '{*"Valid": false,*"Reason": "The database*}' 'orx: broken.qpr: The *' project
                      verify-- json broken.qpr unchanged
                          broken.qpr row 1 '' 'orx: broken.qpr: The *' project set broken.qpr Coordinates =
          c echo '<QPR>' >
          torn.qpr row 1 '{*"Reason": "?*"*}' 'orx: torn.qpr: ?*' project verify-- json torn
              .qpr row 1 $ '{*"File": "\xef\xbf\xbd"*}' $ 'orx: \xff: *' project verify-- json
                  $ '\xff' row 0 'sql.qpr: valid' '' project verify
                      sql.qpr row 0 '{*"Valid": true,*"Reason": null*}' '' project verify-- json sql
              .qpr

                  row 0 '' '' project upgrade sql
              .qpr
                  row 0 '*MajorVersion            6*MinorVersion            7*ReleaseVersion          0*current*' '' project
                      show sql.qpr row 0 '' '' project set
                          sql.qpr MinorVersion = 6 row 0 '*VersionState            older*' '' project show
                                                     sql.qpr row 0 '' '' project set sql.qpr MinorVersion =
              8 unchanged sql
                      .qpr row 1 '' 'orx: sql.qpr: the project is of a newer version' project upgrade sql
                      .qpr

#lists, and paths with a drive
                          row 0 '' '' project new 'C:\Projects\Pit 2\p.qpr' "${sql[@]}" row 0 '' '' list
                              add 'C:\Projects\all.qpl' ' beta ' 'C:\Projects\Pit 2\p.qpr' row 0 '' '' list
                                  add../
                      ../ c / Projects /
                  all.qpl Grün "jét 1.qpr" --default row 0 "Name  Default  Path
                  Grün  \\* $suite\\\\jét 1.qpr beta C :\\\\Projects\\\\Pit 2\\\\p.qpr
      " '' list show 'C:\Projects\all.qpl'
      ln - s "$work/c/Projects/all.qpl" all
                  .qpl
                      row 0 '\[*"Name": "Grün",*"Default": true,*"Name": "beta",*"Default": false,*\]' '' list
                          show
                              all.qpl-- json row 1 '' "orx: all.qpl: lists no project 'Beta'" list default all
                  .qpl Beta row 1 '' "orx: all.qpl: the default project 'Grün' cannot be removed" list remove
                      all.qpl Grün row 0 '' '' list default all
                  .qpl beta row 0 '{*"Default": "beta"*}' '' list default all
                  .qpl-- json row 0 '' '' list default all.qpl-- none row 0 '' '' list remove
                      all.qpl Grün row 0 '' '' list remove
                          all.qpl beta row 1 '' "orx: all.qpl: lists no project 'beta'" list remove
                              all.qpl beta row 0 '\[\]' '' list show all.qpl-- json row 0 '' '' list add all
                  .qpl show list #names of subcommands
                      row 1 '' 'orx: all.qpl: the name of a project cannot be blank' list add all.qpl ' ' p
                  .qpr unchanged all.qpl row 1 '' 'orx: all.qpl: *UTF-8*' list add all.qpl $ 'A\xff' p
                  .qpr unchanged torn.qpr row 1 '' 'orx: torn.qpr: ?*' list add torn.qpr A p.qpr

                      row 0 'LongName         ShortName    Id  Type  Creatable  Latest Access 2016 ACCESS 2016 8 JET   \*          \**
                          Jet 4 JET4 3 JET ' '' platforms row 0 '\[*"Id": 8,*"Type": "JET",*"Creatable": true,*"Latest": true*\]' '' platforms-- json

#registry : NAME DATA TYPE as stored, as shown
                              key = 'HKCU\Software\A b' stored() {
    row 0 '' '' registry set 'hkey_current_user\SOFTWARE\\a B\' "$1" --type "$3" "$2" row 0 "$4" '' registry
        get
        "$key"
        "$1" --type "$3"
  }
  while
    IFS = '|' read - r name data type shown;
  do
    stored
        "$name"
        "$data"
        "$type"
        "${shown:-$data}";
  done << 'TABLE'
|the default value|string
Name|Süd \ "1"|string|Süd \\ "1"
list|set|string
Empty||string
Brackets|[a,b]|string|\[a,b\]
Minus|-5|dword|4294967291
Most|4294967295|dword
Third|-0.3333333333333333|double
Least|5e-324|double
Float|0.1|float
Raw|00fF7f|binary|00FF7F
TABLE
row 0 '' '' registry set "$key\Sub\\$(printf 'x%.0s' {1..100})" Long "$(printf '0a%.0s' {1..100})" --type binary
row 0 '' '' registry set "$key" $'Two\nlines' $'of\ntext'
row 0 'HKCU\\Software\\A b
  (default)  string  the default value
  Brackets   string  \[a,b\]
  Empty      string
  Float      binary  CDCCCC3D
  Least      binary  0100000000000000
  list       string  set
  Minus      dword   4294967291 (-5)
  Most       dword   4294967295 (-1)
  Name       string  Süd \\ "1"
  Raw        binary  00FF7F
  Third      binary  555555555555D5BF
  Two lines  string  of text
  Sub\\
    xx*x\\
      Long  binary  0A0*0A... (100 bytes)' '' registry list "$key"
row 0 '{*"Name": "Third",*"Type": "double",*"Data": -0.3333333333333333*}' '' registry get "$key" Third --type double --json
row 0 '' '' registry set "$key\\C1" '' $'\xc2\x9b31m\x7f\xc2\xa0'
row 0 $'*"data": "\\\\u009b31m\\\\u007f\xc2\xa0"*' '' registry export "$key\\C1"
row 0 '' '' registry delete "$key\\C1"
row 0 '*"Data": "of\\ntext"*' '' registry get "$key" $'Two\nlines' --json

rejected() {
    local reason = $1;
    shift;
    unchanged "$work/user.db" row 1 '' "orx: HK??*: $reason" registry "$@";
  }
  rejected 'there is no such key' get "$key\None"
rejected 'there is no such key' delete "$key\None" Name
rejected "has no value 'None'" get "$key" None
rejected "has no value 'None'" delete "$key" None
rejected 'the key has no default value' get "$key\Sub"
rejected "'Float' is stored as binary of 4 bytes, which is not a double" get "$key" Float --type double
rejected "'Name' is stored as string*" get "$key" Name --type dword
rejected '*-2147483648 to 4294967295*' set "$key" N --type dword 4294967296
rejected "*not '5x'" set "$key" N --type dword 5x
rejected "*not '1e400'" set "$key" N --type double 1e400
rejected "*not '0'" set "$key" N --type binary 0
rejected '*too long*' set "$key\\$(printf 'x%.0s' {1..256})" N 1
rejected 'the key has sub-keys (use --tree)' delete "$key"
rejected 'this key cannot be deleted' delete 'HKCU\software' --tree
row 1 '' 'orx: HKXX\\A: a key begins with HKCU\\ or HKLM\\' registry list 'HKXX\A'
row 2 '' 'orx: --tree excludes VALUE*' registry delete "$key" Name --tree
row 2 '' "orx: '++' is not expected*" registry delete "$key\\Sub" ++
row 2 '' 'orx: *it is empty*' registry export "$key" ''
row 2 '' 'orx: *it is empty*' registry import /dev/null ''
row 2 '' 'orx: --type: long *' registry set "$key" N 1 --type long
row 1 '' 'orx: HKLM\\SOFTWARE: there is no such key' registry list 'HKLM\SOFTWARE'
mkdir -m 555 "$work/closed"
orx=unprivileged ORX_MACHINE_REGISTRY=$work/closed/registry.db \
  row 1 '' "orx: HKLM*: ann may not write $work/closed/registry.db" registry set 'HKLM\SOFTWARE\X' N 1
ORX_USER_REGISTRY=$PWD/torn.qpr row 1 '' "orx: HKCU*: $PWD/torn.qpr is damaged, *" registry list "$key"
#export and import : every type and byte, wherever it is written
cat > all.json << 'JSON'
{
    "key" : "HKLM\\Software\\B",
            "values" : {
              "" : {"type" : "string", "data" : "a\n\"ü\""},
              "Cut" : {"type" : 1, "data" : "6100620000"},
              "Half" : {"type" : 4, "data" : "0102"},
              "Latin" : {"type" : 1, "data" : "FC00"},
              "Open" : {"type" : 1, "data" : "61"},
              "Später" : {"type" : 4294967295, "data" : ""}
            },
                       "keys" : {
      "Empty" : {}, "Raw/ä" : {
        "values" : {
          "Bytes" : {"type" : "binary", "data" : "00FF"}, "Number" : { "type" : "dword", "data" : 4294967291 }
        }
      }
    }
  }
  JSON
sed 's/4294967291/-5/' all.json > written.json
row 0 '' '' registry import written.json
row 0 "$(sed 's/[][\*?]/\\&/g' all.json)" '' registry export 'hklm\Software\B'
row 0 '' '' registry export 'HKLM\Software\B' written.json
cmp all.json written.json || fail 'an export differs'
row 0 '' '' registry set "$key" Kept 1
row 0 '' '' registry import written.json "$key"
row 0 '*  Kept  *  Open  *  Raw/ä\\*' '' registry list "$key"
row 0 '' '' registry export "$key" /dev/null
row 1 '' 'orx: none/a.json: No such *' registry export "$key" none/a.json
row 1 '' 'orx: none.json: No such *' registry import none.json

before=$("$orx" registry export 'HKCU\Software')
while IFS='|' read -r document reason;
  do
    printf '%b' "$document" > bad.json
  row 1 '' "orx: bad.json: $reason" registry import bad.json
done << 'TABLE'
|it is not JSON: parse error at line 1, *
{"key": "HKCU\\\\Software",\n"values": {,}}|it is not JSON: parse error at line 2, column 12*
{"values": {}}|at /key: *
{"key": "HKCU\\\\Software", "keys": {"K": {"value": {}}}}|at /keys/K: 'value' is not expected
{"key": "HKCU\\\\Software", "keys": {"K": []}}|at /keys/K: an object is expected
{"key": "HKCU\\\\Software", "keys": {"A\\\\B": {}}}|at /keys/A*: the name of a key cannot be empty or contain a backslash
{"key": "HKCU\\\\Software", "values": {"A": {"type": "dword", "data": 1}, "a": {"type": "dword", "data": 2}}}|the name 'a' occurs twice*
{"key": "HKCU\\\\Software", "values": {"A\\u0000B": {"type": "dword", "data": 1}}}|a name contains a NUL
{"key": "HKCU\\\\Software", "values": {"A": {"type": "dword", "data": 1}, "N": {"type": "dword", "data": 1.5}}}|at /values/N/data: a whole number *
{"key": "HKCU\\\\Software", "values": {"N": {"type": "double", "data": "1"}}}|at /values/N/type: *
{"key": "HKCU\\\\Software", "values": {"N": {"type": "binary", "data": "0g"}}}|at /values/N/data: hexadecimal *
{"key": "HKCU\\\\Software", "values": {"N": {"type": "string"}}}|at /values/N: both *
TABLE
echo '{"values": {"Ä": {"type": "dword", "data": 1}, "ä": {"type": "dword", "data": 2}}}' > bad.json
row 1 '' "orx: HKCU*: another value has the same name as 'Ä'" registry import bad.json 'HKCU\Software'
deep() {
      printf '{"key": "HKCU\\\\Software", "keys": ';
      printf '{"K": {"keys": %.0s' $(seq "$1");
      printf '{}';
      printf '}}%.0s' $(seq "$1");
      printf '}';
    }
  deep 511 > bad.json
row 1 '' 'orx: bad.json: * too deeply below HKCU\\Software' registry import bad.json
deep 100000 > bad.json
row 1 '' 'orx: bad.json: it is nested too deeply' registry import bad.json
[[ $("$orx" registry export 'HKCU\Software') == "$before" ]] || fail 'a refused import was written'
row 0 '' '' registry delete "$key" ''
row 1 '' 'orx: *: the key has no default value' registry get "$key"
row 0 '' '' registry delete "$key" --tree
row 0 'HKCU\\Software' '' registry list 'HKCU\Software'

#dates : the arguments, the value, the text, the text in full; or what is wrong
while IFS='|' read -r arguments value text full;
  do
    eval "row 0 '*\"Value\": $value?(.0),*\"Text\": \"$text\",*\"FullText\": \"${full:-$text}\"*' '' date "
         "$arguments --json" done
            << 'TABLE' parse '2024/03/05 10:20:30' |
        45356.43090277778 | 24 / 03 / 05 10 : 20 : 30 |
        2024 / 03 / 05 10 : 20 : 30 parse 25 / 12 / 23 --order dmy-- kind date | 45285 | 25 / 12 / 23 |
        2023 / 12 / 25 parse 12 / 25 / 2031 --order mdy | 48207 | 12 / 25 / 2031 00 : 00 : 00 |
        2031 / 12 / 25 00 : 00 : 00 parse 7 : 08 --kind time | 0.2972222222222222 | 07 : 08 : 00 |
        7 : 08 : 00 parse 3.25abc --kind number | 3.25 | 3 | 3 format - 1.25 | -1.25 |
        1899 / 12 / 29 06 : 00 : 00 TABLE row 0 'Value     45356*Text      24/03/05 FullText 2024 / 03 /
            05 Year 2024 Month 3 Day 5 ' '' date parse 24/3/5 --kind date row 0 '24/03/05 12:00:00' '' date
                format 45356.5 row 0 '2024/03/05' '' date format 45356.5 --kind date-- full-- order dmy
                    row 0 '{*"Value": 4*.*"Year": 2*}' '' date now-- json
                        row 1 '' 'orx: 2023/02/29: Error: Invalid day.' date parse 2023 /
            02 /
            29 row 1 '' 'orx: 5/5 25:00: it is not a date or a time' date parse '5/5 25:00' --kind date
                row 1 '' 'orx: 2024/03/05T10:20: a space is needed*' date parse 2024 /
            03 / 05T10 : 20 row 1 '' 'orx: a/b: the date contains no number' date parse a /
            b row 1 '' 'orx: 1e9: it is outside the years 100 to 9999' date
                format 1e9 row 1 '' 'orx: nan: it *' date format nan
                    row 1 '' 'orx: 1e19: it is too large' date format 1e19 --kind number
                        row 1 '' 'orx: 1,5: it is not a number' date format 1,
        5

#angles and fields : the arguments, and what is shown of them
            row 0 $ 'Radians  -0.7941248096574199\nDegrees  -45.5' '' angle read -
            45 : 30 : 00 --mode dms
                row 0 '*"Degrees": 45.5*' '' angle read '  4530.00000' --mode 12 --packed-- json
                    row 0 '*"Radians": -0.5,*' '' angle read-- mode radians-- json-- -
            .5 row 0 ' 45.50000000' '' angle write 0.7941248096574199 --mode degrees
                row 0 '*"Text": " -45 7 5.00"*' '' angle write-- degrees -
            45.11805555555555 --mode dms -
            decimal-- packed-- json row 1 '' 'orx: 1,5: it is not a number' angle write 1,
        5 --mode dms row 2 '' "orx: --mode: '15' is not one of degrees, dms, *, dms-decimal *" angle
            read 1 --mode 15 row 2 '' 'orx: --mode is required*' angle write 1

        while IFS = '|' read - r status value special result arguments reason;
  do
    eval "row $status '*\"Value\": $value,*\"Special\": $special\",*\"Result\": $result?}' '${reason:+orx: *: $reason}' field --json $arguments"
done << 'TABLE'
0|42|0,*"ordinary|0|integer '  42abc'
0|-5|0,*"ordinary|0|1 -5
0|3|1,*"below|0|integer '<' --low 3
0|0.1|2,*"above|0|float '>' --high 0.1
0|0.0|4,*"NS|0|double ns --subtype 3
0|0.0|6,*"NE|0|number -
0|"Süd \\\\ \\"Feld\\""|0,*"ordinary|0|text 'Süd \ "Feld"' --size 14
0|"list"|0,*"ordinary|0|long-text list --size 5
1|"S"|0,*"ordinary|-3|text Süd --size 3|it does not fit into 3 bytes
0|0.0|3,*"NC|0|dm nc --size 7
1|0|0,*"ordinary|-1|yes-no ''|it is not yes or no
0|1|0,*"ordinary|0|yes-no Y
0|null|0,*"ordinary|0|5 x
0|-0.7941248096574199|0,*"ordinary|0|11 -45:30
0|1.5707963267948966|0,*"ordinary|0|double 90 --subtype 5
0|45356.0,*"2024/03/05"|0,*"ordinary|0|date 5/3/2024
0|45415.0,*"2024/05/03"|0,*"ordinary|0|date 5/3/2024 --subtype 0
0|0.5,*"12:00:00"|0,*"ordinary|0|time 12:00
0|45356.5,*"2024/03/05 12:00:00"|0,*"ordinary|0|datetime '5/3/2024 12:00'
0|0.0,*null|7,*"ERR|0|datetime ' err '
1|0.0,*null|0,*"ordinary|-1|date 31/2/2024|it is not a date
TABLE
row 1 $'Value        abc\nSpecial      0\nSpecialName  ordinary\nResult       -3' 'orx: abcdef: it *4 bytes' field text abcdef --size 4
row 2 '' "orx: TYPE: 'Integer' is not one of integer, *" field Integer 1
row 2 '' "orx: TYPE: '18' is not one of *" field 18 1
row 2 '' "orx: --low: '1.5' is not a valid integer *" field integer '<' --low 1.5
row 2 '' 'orx: --high: degrees has no limits *' field degrees 1 --high 1
row 2 '' 'orx: --size: *' field text a --size -1
#the log, read from its end, and followed through whatever happens to it
log="$work/public/Halvark/TESSEL/6.9.1/DEBUG.LOG"
PUBLIC='' row 1 '' 'orx: the log: there is no folder*' log path
row 1 '' "orx: $log: No such file or directory" log tail
mkdir "$work/public"
row 0 "$log" '' log path
row 0 '{*"Path": "*/DEBUGThread.LOG"*}' '' log path --thread --json
seq -f $'line %.0f\r' 30000 > "$log"
row 0 "$(seq -f 'line %.0f' 29991 30000)" '' log tail
row 0 "$(seq -f 'line %.0f' 10000 30000)" '' log tail -n 20001
row 0 "$(seq -f 'line %.0f' 30000)" '' log tail -n 30001
row 0 '' '' log tail -n 0
printf 'a\tb\r\n\r\nopen' > "$log"
row 0 $'a b\n\nopen' '' log tail
row 0 '\[*{*"Line": ""*},*{*"Line": "open"*}*\]' '' log tail -n 2 --json
row 2 '' 'orx: -n: *' log tail -n -1
row 2 '' 'orx: -f excludes --json*' log tail -f --json

shown() {
#LINES : waits for what the follower shows for ((i = 0; i < 300; ++i));
      do
        [[$(cat "$work/shown") == "$1"]] && return sleep 0.1 done fail "log tail -f: $(cat " $work / shown
                                                   ")"
                                                   "  expected: $1"
    }
for
  signal in INT TERM;
do
  printf 'one\r\ntwo\r\nhal' >
              "$log"
              "$orx" log tail -
                  n 2 - f >
              "$work/shown" &
          shown $ 'two' printf 'f\r\nthree\r\n' >> "$log" shown $ 'two\nhalf\nthree' printf 'four\r\n' >
              "$log" shown $ 'two\nhalf\nthree\nfour' printf 'another that is longer\r\n' >
              "$log" shown $ 'two\nhalf\nthree\nfour\nanother that is longer' kill - s
                  "$signal" $ !wait $ ! ||
      fail "log tail -f: status $? after $signal" done(while sleep 0.1; do echo more >> "$log"; done)& {
    "$orx" log tail - f 2 > "$work/err";
    echo $ ? > "$work/status";
  }
| true
kill $!
[[ $(cat "$work/status" "$work/err") == $'1\norx: standard output: '* ]] || fail "a reader that left: $(cat "$work/err")"

keys=$("$orx" key new -n 20000)
[[ $(sort -u <<< "$keys" | grep -cE '^[0-9]{12}0[0-9]{5}$') == 20000 ]] || fail "key new: $(head -3 <<< "$keys")..."
row 0 '\[*{*"Key": "*000001"*}*\]' '' key new --json
row 2 '' 'orx: -n: *' key new -n 0

#section : a cube with what files have beside vertices and faces, far from the origin
cube() { # EAST
  printf '\xEF\xBB\xBF# C:\\cube\\\r\nmtllib v.mtl\r\no cube\r\n\r\nf 1 4 3 2\r\n'
  printf 'v %s\r\n' "$1 0 0" "$(($1 + 1)) 0 +0" "$(($1 + 1)) 1 0 1.0" "$1 1.0 0e0" "$1 0 1"
  printf 'v %s\n' "$(($1 + 1)) 0 1" "$(($1 + 1)) 1 1 .5 .5 .5" "$1 1 1"
  printf 'vn 0 0 1\nf -4/1 -3/2 -2/3 -1/4#top\nf 1//1 2//1 6//1 \\\r\n 5//1\nl 1 2\n  f 2/1/1 3/2/1 7/3/1 6/4/1\n'
  printf 's off\nf\t3 4 8 7 \nf 4 1 5 8'
}
cube 7000000 > 'Würfel <1> & 2.obj'
while read -r length plane;
do
  row 0 $ 'Polylines  1\nClosed     1\nLength     ' "$length" '' section 'Würfel <1> & 2.obj' --plane
      "$plane" --svg cube.svg [[$(< cube.svg) == *">Würfel &lt;1> &amp; 2.obj: 1 polyline, length $length<" *
                                                     'class="section" d="M' * Z * '</svg>']] ||
      fail "section: $plane" done << 'END' 4.00000 0,
      0, .5, 1, 0, .5, 0, 1, .5 4.00000 0, 0, 0, 1, 0, 0, 0, 1, 0 4.00000 7000000, 0, 0, 7000000, 1, 0,
      7000000, 0, 1 4.00000 0, 0, 1, 1, 0, 1, 0, 1, 1 4.00000 0, 0, 0, 0, 7e6, 0, 7e6, 0, 0 4.00000 7000000.1,
      0, 0, 7000000.1, 1, 0, 7000000.1, 0, 1 4.82843 7000000, 0, -1, 7000001, 1, -1, 7000000, 0,
      1 4.24264 7000001, .5, 0, 7000000.5, 1, 0, 7000000.5, .5, .5 END section() {
    row "$1"
        "$2"
        "$3" section part.obj-- plane "${@:4}";
  }
cube 0 > part.obj
section 0 $'{\n  "Length": 4,\n*"Closed": true, "Length": 4, "Points": \[\[1, 0, 0.5\], *' '' 0,0,.5,1,0,.5,0,1,.5 --json
unchanged part.obj section 1 '' 'orx: part.obj: --svg would overwrite it' 0,0,.5,1,0,.5,0,1,.5 --svg ./part.obj
for plane in 0,0,1.01,1,0,1.01,0,1,1.01 1,-1,0,-1,1,0,0,-1,1;
do #beside it;
through one corner unchanged
    cube.svg section 1 '' 'orx: part.obj: the plane does not cut it' $plane-- svg cube.svg done
        section 2 '' 'orx: --plane: the three points are on one line*' 7e6,
    7e6, 0, 7000001, 7e6, 0.1, 7000002, 7e6,
    .2 section 2 '' 'orx: --plane: three points need nine numbers*' 0, 0, 0, 1, 0, 0, 0,
    1 section 2 '' "orx: --plane: '1x' is not a number*" 0, 0, 0, 1, 0, 0, 0, 1x,
    0 section 2 '' 'orx: --tolerance: it is less than 0*' 0, 0, 0, 1, 0, 0, 0, 1,
    0 --tolerance -
        1
#tetrahedra : one no larger than a tolerance; \
    one with a corner hardly off the plane, on edges both steep and flat
        while read -
        r top right back front plane;
do {
  printf 'v %s\n' "${top//,/ }" "${right//,/ }" "${back//,/ }" "${front//,/ }";
  printf 'f %s\n' '1 2 3' '1 3 4' '1 4 2' '2 4 3';
}
> part.obj section 0 $ 'Polylines  1\nClosed     1\nLength     *' '' "$plane" done << 'END' 0, 0, 1e-9 1e-9,
    0, 0 0, 1e-9, 0 0, 0, 0 0, 0, 5e-10, 1, 0, 5e-10, 0, 1, 5e-10 0, 0, 5e-9 1, 0, -1e-5 0, 1, 1 0, -1,
    1e-5 0, 0, 0, 1, 0, 0, 0, 1,
    0 END
#three faces at an edge, and a fourth beside one of them
            printf 'v %s\n' '0 0 0' '0 0 2' '1 0 0' '0 1 0' '-1 0 0' '1.01 0 0' '1.01 0 2' '2 0 0' >
        part.obj printf 'f %s\n' '1 2 3' '1 2 4' '1 2 5' '6 7 8' >>
        part.obj section 0 $ 'Polylines  4\nClosed     0\nLength     *' '' 0,
    0, .5, 1, 0, .5, 0, 1, .5 section 0 $ 'Polylines  3\nClosed     0\nLength     *' '' 0, 0, .5, 1, 0, .5, 0,
    1, .5 --tolerance .3 while IFS = '|' read - r reason text;
do
  printf "v 0 0 0\nv 1 0 0\nv 0 1 1\n$text" > part.obj
  unchanged cube.svg section 1 '' "orx: part.obj: $reason" 0,0,.5,1,0,.5,0,1,.5 --svg cube.svg
done << 'END'
it has no faces|
line 4: a vertex needs three coordinates|v 1 2\nv 3 4 5
line 5: '1,5' is not a number*|\nv 1,5 2 3
line 4: 'nan' is not a number*|v 0 0 nan
line 4: '+-1' is not a number*|v 0 0 +-1
line 4: '1e16' is not a number*|v 0 0 1e16
line 5: a face needs three corners*|f 1 \\\n 2
line 4: '2.5' is not the number of a vertex|f 1 2.5 3
line 4: there is no vertex 0|f 0 1 2
line 5: there is no vertex -4|f 1 2 3\nf 1 2 -4
line 4: there is no vertex 4|f 1 2 4\nf 1 2 3
END

#a write that fails is told, whether in the commit or before, and leaves the file
limited() (ulimit -Sf 1 && exec "$program" "$@") # KiB
for size in 2000 100000;
do
  orx=limited unchanged all.qpl row 1 '' 'orx: all.qpl: File too large' list add all.qpl "$(printf "A%${size}s" B)" p.qpr
done
cp all.json kept.json
"$orx" registry import <(printf '{"values": {"A": {"type": "string", "data": "%2000s"}}}' B) 'HKLM\Software\B'
printf '{"keys": {"Z": {"values": {"A": {"type": "dword", "data": 1}, "L": {"type": "string", "data": "%99999s"}}}}}' B > large.json
before=$("$orx" registry export 'HKLM\Software\B')
orx=limited row 1 '' 'orx: HKLM\\Software\\B*: *' registry import large.json 'HKLM\Software\B'
[[ $("$orx" registry export 'HKLM\Software\B') == "$before" ]] || fail 'an import that failed was written in part'
orx=limited unchanged kept.json row 1 '' 'orx: kept.json: File too large' registry export 'HKLM\Software\B' kept.json
err=$("$orx" platforms 2>&1 > /dev/full)
[[ $? == 1 && $err == 'orx: standard output: '* ]] || fail "a full disk: $err"
{
    "$orx" platforms 2 > "$work/err";
    echo $ ? > "$work/status";
  }
| true[[$(cat "$work/status") == 0 || ($(cat "$work/status") == 1 && -s $work / err)]] ||
    fail "a reader that left: $(cat " $work / err
        ")"[[-z $(find "$work" - name '*.tmp*' - o - name '.*.qp?*')]] ||
    fail 'temporary files are left'

    exit $((failures > 0))
