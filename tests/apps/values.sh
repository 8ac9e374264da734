# orx date, orx angle and orx field
while IFS='|' read -r arguments value text full; do
  eval "prints '*\"Value\": $value?(.0),*\"Text\": \"$text\",*\"FullText\": \"${full:-$text}\"*' date $arguments --json"
done << 'END'
parse '2024/03/05 10:20:30'|45356.43090277778|24/03/05 10:20:30|2024/03/05 10:20:30
parse 25/12/23 --order dmy --kind date|45285|25/12/23|2023/12/25
parse 12/25/2031 --order mdy|48207|12/25/2031 00:00:00|2031/12/25 00:00:00
parse 7:08 --kind time|0.2972222222222222|07:08:00| 7:08:00
parse 3.25abc --kind number|3.25|3|3
END
prints $'Value     45356*FullText  2024/03/05\nYear      2024\nMonth     3\nDay       5' date parse 24/3/5 --kind date
prints '24/03/05 12:00:00' date format 45356.5
prints '2024/03/05' date format 45356.5 --kind date --full --order dmy
prints '{*"Value": 4*.*"Year": 2*}' date now --json
fails '2023/02/29: Error: Invalid day.' date parse 2023/02/29
fails '5/5 25:00: it is not a date or a time' date parse '5/5 25:00' --kind date
fails '2024/03/05T10:20: a space is needed*' date parse 2024/03/05T10:20
fails 'a/b: the date contains no number' date parse a/b
fails '1e9: it is outside the years 100 to 9999' date format 1e9
fails '1e19: it is too large' date format 1e19 --kind number
fails '1,5: it is not a number' date format 1,5

prints $'Radians  -0.7941248096574199\nDegrees  -45.5' angle read -45:30:00 --mode dms
prints '*"Degrees": 45.5*' angle read '  4530.00000' --mode 12 --packed --json
prints '*"Radians": -0.5,*' angle read --mode radians --json -- -.5
prints ' 45.50000000' angle write 0.7941248096574199 --mode degrees
prints '*"Text": " -45 7 5.00"*' angle write --degrees -45.11805555555555 --mode dms-decimal --packed --json
fails '1,5: it is not a number' angle write 1,5 --mode dms
rejects_usage "--mode: '15' is not one of degrees, dms, *, dms-decimal " angle read 1 --mode 15

while IFS='|' read -r status value special result arguments reason; do
  eval "expect $status '*\"Value\": $value,*\"Special\": $special\",*\"Result\": $result?}' '${reason:+orx: *: $reason}' field --json $arguments"
done << 'END'
0|42|0,*"ordinary|0|integer '  42abc'
0|-5|0,*"ordinary|0|1 -5
0|3|1,*"below|0|integer '<' --low 3
0|0.1|2,*"above|0|float '>' --high 0.1
0|0.0|6,*"NE|0|number -
0|"Süd \\\\ \\"Feld\\""|0,*"ordinary|0|text 'Süd \ "Feld"' --size 14
1|"S"|0,*"ordinary|-3|text Süd --size 3|it does not fit into 3 bytes
0|0.0|3,*"NC|0|dm nc --size 7
1|0|0,*"ordinary|-1|yes-no ''|it is not yes or no
0|1|0,*"ordinary|0|yes-no Y
0|null|0,*"ordinary|0|5 x
0|-0.7941248096574199|0,*"ordinary|0|11 -45:30
0|45356.0,*"2024/03/05"|0,*"ordinary|0|date 5/3/2024
0|45415.0,*"2024/05/03"|0,*"ordinary|0|date 5/3/2024 --subtype 0
0|0.5,*"12:00:00"|0,*"ordinary|0|time 12:00
0|45356.5,*"2024/03/05 12:00:00"|0,*"ordinary|0|datetime '5/3/2024 12:00'
0|0.0,*null|7,*"ERR|0|datetime ' err '
1|0.0,*null|0,*"ordinary|-1|date 31/2/2024|it is not a date
END
expect 1 $'Value        abc\nSpecial      0\nSpecialName  ordinary\nResult       -3' 'orx: abcdef: it *4 bytes' field text abcdef --size 4
rejects_usage "TYPE: 'Integer' is not one of integer, " field Integer 1
rejects_usage "--low: '1.5' is not a valid integer " field integer '<' --low 1.5
rejects_usage '--high: degrees has no limits ' field degrees 1 --high 1
rejects_usage '--size: ' field text a --size -1
