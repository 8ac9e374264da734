# The command line as a whole, the platforms, unique keys, and output that cannot be written
prints 'orx 6.*' --version
prints '*Usage: orx project new*' project new --help
rejects_usage 'A subcommand is required'
rejects_usage 'FILE is required' project show
prints $'LongName         ShortName    Id  Type  Creatable  Latest\nAccess 2016      ACCESS 2016  8   JET   \\*          \\*\n*' platforms

keys=$("$orx" key new -n 20000)
[[ $(sort -u <<< "$keys" | grep -cE '^[0-9]{12}0[0-9]{5}$') == 20000 ]] || fail "key new: $(head -3 <<< "$keys")..."
prints '\[*{*"Key": "*000001"*}*\]' key new --json
rejects_usage '-n: ' key new -n 0

err=$("$orx" platforms 2>&1 > /dev/full)
[[ $? == 1 && $err == 'orx: standard output: '* ]] || fail "a full disk: $err"
{ "$orx" platforms 2> "$work/err"; echo $? > "$work/status"; } | true
[[ $(< "$work/status") == 0 || ($(< "$work/status") == 1 && -s $work/err) ]] || fail "a closed pipe: $(< "$work/err")"
