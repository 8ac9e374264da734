# orx project
sql=(SiteName=Ost SiteDatabase=OstSite SiteDatabasePlatform=SQL2019 SiteDatabaseServerName='S\1' ProjectName=P DataGroupName=D)
jet=(SiteName='Süd Feld' SiteDatabase=site.mdb SiteDatabasePlatform='access 2007' ProjectName='Grube 1' DataGroupName=Alle)
succeeds project new 'jét 1.qpr' "${jet[@]}"
fails 'jét 1.qpr: the file exists*' project new 'jét 1.qpr' "${jet[@]}"
succeeds project new --force 'jét 1.qpr' "${jet[@]}" Description='Süd & "Nord" <1>'
succeeds project new sql.qpr "${sql[@]}" MajorVersion=5 MinorVersion=9 ReleaseVersion=99
succeeds project new 'C:\Projects\Pit 2\p.qpr' "${sql[@]}"
fails '/folder/a.qpr: a project file needs*' project new /folder/a.qpr "${jet[@]}"
unchanged bad.qpr fails 'bad.qpr: The site name cannot be empty.' project new bad.qpr ProjectName=P

# One invalid setting refuses all settings.
rejects_usage "*'SiteName' is not NAME=VALUE" project set 'jét 1.qpr' SiteName
while IFS='|' read -r setting reason; do
  unchanged 'jét 1.qpr' fails "jét 1.qpr: $reason" project set 'jét 1.qpr' Coordinates=changed "$setting"
done << END
Bogus=1|a project has no property 'Bogus'
siteNAME=$(repeat x 51)|SiteName takes at most 50 characters, not 51
SiteDatabasePlatform=SQL2|SiteDatabasePlatform takes a name*'SQL2'
MajorVersion=6x|MajorVersion takes a whole number, not '6x'
ReleaseVersion=99999999999|ReleaseVersion takes a whole number, not '99999999999'
ProjectName=|The project name cannot be empty
END
succeeds project set 'jét 1.qpr' coordinates='a=b' "SiteDatabase=$work/elsewhere/new.mdb" RELEASEVERSION=-3

suite=${PWD//\//\\\\}  # as a pattern
prints "File                    $suite\\\\jét 1.qpr
SiteName                Süd Feld
SiteDatabase            $suite\\\\new.mdb
SiteDatabasePlatform    ACCESS 2016
*Grube 1*Alle*a=b*Süd & \"Nord\" <1>*6*7*-3*Access 2016*JET*8*VersionState            current
ProjectBasePath         ${suite%\\\\*}
SiteProjectDatagroup    \\\\Süd Feld\\\\Grube 1\\\\Alle\\\\" project show 'jét 1.qpr'
prints '{*"SiteName": "Ost",*"MinorVersion": 9,*"PlatformType": "SQL",*"VersionState": "older",*}' project show sql.qpr --json
fails ' : the name of a file cannot end in white space' project show ' '

# An invalid project is shown, but never written.
cat > broken.qpr << 'XML'
<QPR><PROJECT><PROPERTY NAME="SiteName" VALUE="a&#10;b&#127;c"/>
<PROPERTY NAME="SiteDatabasePlatform" VALUE="later"/><PROPERTY NAME="MajorVersion" VALUE="7"/></PROJECT></QPR>
XML
prints '*SiteName                a b c*SiteDatabasePlatform    -*PlatformId              -1*newer*' project show broken.qpr
expect 1 '{*"Valid": false,*"Reason": "The database*}' 'orx: broken.qpr: The *' project verify --json broken.qpr
unchanged broken.qpr fails 'broken.qpr: The *' project set broken.qpr Coordinates=c
echo '<QPR>' > torn.qpr
expect 1 '{*"Reason": "?*"*}' 'orx: torn.qpr: ?*' project verify --json torn.qpr
expect 1 $'{*"File": "\xef\xbf\xbd"*}' $'orx: \xff: *' project verify --json $'\xff'
prints 'sql.qpr: valid' project verify sql.qpr

succeeds project upgrade sql.qpr
prints '*MajorVersion            6*MinorVersion            7*ReleaseVersion          0*current*' project show sql.qpr
succeeds project set sql.qpr MinorVersion=8
unchanged sql.qpr fails 'sql.qpr: the project is of a newer version' project upgrade sql.qpr
