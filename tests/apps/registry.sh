# orx registry: values and keys
key='HKCU\Software\A b'
while IFS='|' read -r name data type shown; do
  succeeds registry set 'hkey_current_user\SOFTWARE\\a B\' "$name" --type "$type" "$data"
  prints "${shown:-$data}" registry get "$key" "$name" --type "$type"
done << 'END'
|the default value|string
Name|Süd \ "1"|string|Süd \\ "1"
Empty||string
Brackets|[a,b]|string|\[a,b\]
Minus|-5|dword|4294967291
Third|-0.3333333333333333|double
Float|0.1|float
Raw|00fF7f|binary|00FF7F
END
succeeds registry set "$key\Sub\\$(repeat x 100)" Long "$(repeat 0a 100)" --type binary
succeeds registry set "$key" $'Two\nlines' $'of\ntext'
prints 'HKCU\\Software\\A b
  (default)  string  the default value
  Brackets   string  \[a,b\]
  Empty      string
  Float      binary  CDCCCC3D
  Minus      dword   4294967291 (-5)
  Name       string  Süd \\ "1"
  Raw        binary  00FF7F
  Third      binary  555555555555D5BF
  Two lines  string  of text
  Sub\\
    xx*x\\
      Long  binary  0A0*0A... (100 bytes)' registry list "$key"
prints '{*"Name": "Third",*"Type": "double",*"Data": -0.3333333333333333*}' registry get "$key" Third --type double --json
prints '*"Data": "of\\ntext"*' registry get "$key" $'Two\nlines' --json

# REASON ARGUMENT...: the command is refused and changes nothing.
refuses() { unchanged "$work/user.db" fails "HK??*: $1" registry "${@:2}"; }
refuses 'there is no such key' get "$key\None"
refuses 'there is no such key' list 'HKLM\SOFTWARE'
refuses 'there is no such key' delete "$key\None" Name
refuses "the key has no value 'None'" get "$key" None
refuses "the key has no value 'None'" delete "$key" None
refuses 'the key has no default value' get "$key\Sub"
refuses "'Float' is stored as binary of 4 bytes, which is not a double" get "$key" Float --type double
refuses '*-2147483648 to 4294967295*' set "$key" N --type dword 4294967296
refuses "*not '5x'" set "$key" N --type dword 5x
refuses "*not '0'" set "$key" N --type binary 0
refuses '*too long*' set "$key\\$(repeat x 256)" N 1
refuses 'the key has sub-keys (use --tree)' delete "$key"
refuses 'this key cannot be deleted' delete 'HKCU\software' --tree
refuses 'a key begins with HKCU\\ or HKLM\\' list 'HKXX\A'
rejects_usage '--tree excludes VALUE' registry delete "$key" Name --tree
rejects_usage "'++' is not expected" registry delete "$key\\Sub" ++
rejects_usage '--type: long ' registry set "$key" N 1 --type long

# ARGUMENT...: runs the host without the privileges of root, which file permissions do not bind.
run_unprivileged() {
  if [[ $(id -u) == 0 ]]; then setpriv --bounding-set=-all --inh-caps=-all "$program" "$@"; else "$program" "$@"; fi
}
mkdir -m 555 "$work/closed"
orx=run_unprivileged ORX_MACHINE_REGISTRY=$work/closed/registry.db \
  fails "HKLM*: ann may not write $work/closed/registry.db" registry set 'HKLM\SOFTWARE\X' N 1
echo '<QPR>' > torn.db
ORX_USER_REGISTRY=$PWD/torn.db fails "HKCU*: $PWD/torn.db is damaged, *" registry list "$key"

succeeds registry delete "$key" ''
fails '*: the key has no default value' registry get "$key"
succeeds registry delete "$key" --tree
prints 'HKCU\\Software' registry list 'HKCU\Software'
