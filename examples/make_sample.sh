#!/usr/bin/env bash
# Writes the sample suite with orx itself, and replaces the old one.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export ORX_DRIVES=$here/suite/drives
orx() { "$here/../run.sh" "$@"; }

rm -rf "$here/suite"
mkdir -p "$ORX_DRIVES/c/Projects/Kestrel Ridge/North Pit" "$ORX_DRIVES/c/Projects/Gruental/Stollen 4"

north_pit='C:\Projects\Kestrel Ridge\North Pit\north_pit.qpr'
orx project new "$north_pit" \
  SiteName='Kestrel Ridge' SiteDatabase='kestrel_ridge.mdb' SiteDatabasePlatform='Access 2016' \
  ProjectName='North Pit' DataGroupName='Grade Control' Coordinates='MGA94 Zone 50' \
  Description='Open cut gold, benches of 5 m, blasts from 1 to 212'

stollen_4='C:\Projects\Gruental\Stollen 4\stollen_4.qpr'
orx project new "$stollen_4" \
  SiteName='Grüntal' SiteDatabase='GruentalSite' SiteDatabasePlatform='SQL Server 2019' \
  SiteDatabaseServerName='GRT-SQL1\MINE' ProjectName='Stollen 4' DataGroupName='Vermessung' \
  Coordinates='ETRS89 UTM 32N' Description='Fluorspar, drift 4 below the 620 m level' MinorVersion=5 ReleaseVersion=2

list='C:\Projects\projects.qpl'
orx list add "$list" 'North Pit' "$north_pit" --default
orx list add "$list" 'Stollen 4' "$stollen_4"
