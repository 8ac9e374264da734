# orx list, with paths of the suite and of the system
suite=${PWD//\//\\\\}  # as a pattern
succeeds list add 'C:\Projects\all.qpl' ' beta ' 'C:\Projects\Pit 2\p.qpr'
succeeds list add ../../c/Projects/all.qpl Grün 'jét 1.qpr' --default
prints "Name  Default  Path
Grün  \\*        $suite\\\\jét 1.qpr
beta           C:\\\\Projects\\\\Pit 2\\\\p.qpr" list show 'C:\Projects\all.qpl'
ln -s "$work/c/Projects/all.qpl" all.qpl
prints '\[*"Name": "Grün",*"Default": true,*"Name": "beta",*"Default": false,*\]' list show all.qpl --json
fails "all.qpl: there is no project 'Beta' in the list" list default all.qpl Beta
fails "all.qpl: the default project 'Grün' cannot be removed" list remove all.qpl Grün
rejects_usage '*it is empty' list default all.qpl ''
rejects_usage 'NAME excludes --none' list default all.qpl beta --none
succeeds list default all.qpl beta
prints '{*"Default": "beta"*}' list default all.qpl --json
succeeds list default all.qpl --none
succeeds list remove all.qpl Grün
succeeds list remove all.qpl beta
prints '\[\]' list show all.qpl --json

succeeds list add all.qpl show list  # names of subcommands
fails 'all.qpl: the name of a project cannot be blank' list add all.qpl ' ' p.qpr
unchanged all.qpl fails 'all.qpl: *UTF-8*' list add all.qpl $'A\xff' p.qpr
echo '<QPR>' > torn.qpr
unchanged torn.qpr fails 'torn.qpr: ?*' list add torn.qpr A p.qpr
for size in 2000 100000; do  # the write fails in the commit, or before it
  orx=limit_file_size unchanged all.qpl fails 'all.qpl: File too large' list add all.qpl "$(printf "A%${size}s" B)" p.qpr
done
