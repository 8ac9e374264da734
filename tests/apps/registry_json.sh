# orx registry export and import: every type and byte is kept
key='HKCU\Software\A b'
cat > all.json << 'JSON'
{
  "key": "HKLM\\Software\\B",
  "values": {
    "": {"type": "string", "data": "a\n\"ü\""},
    "Cut": {"type": 1, "data": "6100620000"},
    "Half": {"type": 4, "data": "0102"},
    "Latin": {"type": 1, "data": "FC00"},
    "Open": {"type": 1, "data": "61"},
    "Später": {"type": 4294967295, "data": ""}
  },
  "keys": {
    "Empty": {},
    "Raw/ä": {
      "values": {
        "Bytes": {"type": "binary", "data": "00FF"},
        "Number": {"type": "dword", "data": 4294967295}
      }
    }
  }
}
JSON
sed 's/"data": 4294967295/"data": -1/' all.json > written.json
succeeds registry import written.json
prints "$(sed 's/[][\*?]/\\&/g' all.json)" registry export 'hklm\Software\B'
succeeds registry export 'HKLM\Software\B' written.json
cmp all.json written.json || fail 'an export differs'
succeeds registry set "$key" Kept 1
succeeds registry import written.json "$key"
prints '*  Kept  *  Open  *  Raw/ä\\*' registry list "$key"
succeeds registry export "$key" /dev/null
fails 'none/a.json: No such *' registry export "$key" none/a.json
fails 'none.json: No such *' registry import none.json
rejects_usage '*it is empty' registry export "$key" ''
succeeds registry set "$key\\C1" '' $'\xc2\x9b31m\x7f\xc2\xa0'
prints $'*"data": "\\\\u009b31m\\\\u007f\xc2\xa0"*' registry export "$key\\C1"

# A refused import writes nothing.
refuses_import() { unchanged "$work/user.db" fails "$1" registry import bad.json "${@:2}"; }  # REASON [KEY]
while IFS='|' read -r reason document; do
  printf '%b' "$document" > bad.json
  refuses_import "bad.json: $reason"
done << 'END'
it is not JSON: parse error at line 1, *|
it is not JSON: parse error at line 2, column 12*|{"key": "HKCU\\\\Software",\n"values": {,}}
at /key: *|{"values": {}}
at /keys/K: 'value' is not expected|{"key": "HKCU\\\\Software", "keys": {"K": {"value": {}}}}
at /keys/K: an object is expected|{"key": "HKCU\\\\Software", "keys": {"K": []}}
at /keys/A*: the name of a key cannot *|{"key": "HKCU\\\\Software", "keys": {"A\\\\B": {}}}
the name 'a' occurs twice*|{"key": "HKCU\\\\Software", "values": {"A": {"type": "dword", "data": 1}, "a": {"type": "dword", "data": 2}}}
a name contains a NUL|{"key": "HKCU\\\\Software", "values": {"A\\u0000B": {"type": "dword", "data": 1}}}
at /values/N/data: a whole number *|{"key": "HKCU\\\\Software", "values": {"A": {"type": "dword", "data": 1}, "N": {"type": "dword", "data": 1.5}}}
at /values/N/type: *|{"key": "HKCU\\\\Software", "values": {"N": {"type": "double", "data": "1"}}}
at /values/N/data: hexadecimal *|{"key": "HKCU\\\\Software", "values": {"N": {"type": "binary", "data": "0g"}}}
at /values/N: both *|{"key": "HKCU\\\\Software", "values": {"N": {"type": "string"}}}
END
echo '{"values": {"Ä": {"type": "dword", "data": 1}, "ä": {"type": "dword", "data": 2}}}' > bad.json
refuses_import "HKCU*: another value has the same name as 'Ä'" 'HKCU\Software'
nest() { printf '%s{}%s' "{\"key\": \"HKCU\\\\Software\", \"keys\": $(repeat '{"K": {"keys": ' "$1")" "$(repeat '}}' "$1")}"; }  # DEPTH
nest 511 > bad.json
refuses_import 'bad.json: * too deeply below HKCU\\Software'
nest 100000 > bad.json
refuses_import 'bad.json: it is nested too deeply'

"$orx" registry import <(printf '{"values": {"A": {"type": "string", "data": "%2000s"}}}' B) 'HKLM\Software\B'
printf '{"keys": {"Z": {"values": {"A": {"type": "dword", "data": 1}, "L": {"type": "string", "data": "%99999s"}}}}}' B > large.json
before=$("$orx" registry export 'HKLM\Software\B')
orx=limit_file_size fails 'HKLM\\Software\\B*: *' registry import large.json 'HKLM\Software\B'
[[ $("$orx" registry export 'HKLM\Software\B') == "$before" ]] || fail 'an import that failed was written in part'
orx=limit_file_size unchanged written.json fails 'written.json: File too large' registry export 'HKLM\Software\B' written.json
