# orx section
# EAST: a unit cube at this easting, in a file with every other statement, ending and notation that files contain.
cube() {
  printf '\xEF\xBB\xBF# C:\\cube\\\r\nmtllib v.mtl\r\no cube\r\n\r\nf 1 4 3 2\r\n'
  printf 'v %s\r\n' "$1 0 0" "$(($1 + 1)) 0 +0" "$(($1 + 1)) 1 0 1.0" "$1 1.0 0e0" "$1 0 1"
  printf 'v %s\n' "$(($1 + 1)) 0 1" "$(($1 + 1)) 1 1 .5 .5 .5" "$1 1 1"
  printf 'vn 0 0 1\nf -4/1 -3/2 -2/3 -1/4#top\nf 1//1 2//1 6//1 \\\r\n 5//1\nl 1 2\n  f 2/1/1 3/2/1 7/3/1 6/4/1\n'
  printf 's off\nf\t3 4 8 7 \nf 4 1 5 8'
}
cube 7000000 > 'Würfel <1> & 2.obj'
while read -r length plane; do
  prints $'Polylines  1\nClosed     1\nLength     '"$length" section 'Würfel <1> & 2.obj' --plane "$plane" --svg cube.svg
  [[ $(< cube.svg) == *">Würfel &lt;1> &amp; 2.obj: 1 polyline, length $length<"*'class="section" d="M'*Z*'</svg>' ]] || fail "section: $plane"
done << 'END'
4.00000 0,0,.5,1,0,.5,0,1,.5
4.00000 0,0,0,1,0,0,0,1,0
4.00000 7000000,0,0,7000000,1,0,7000000,0,1
4.00000 0,0,0,0,7e6,0,7e6,0,0
4.00000 7000000.1,0,0,7000000.1,1,0,7000000.1,0,1
4.82843 7000000,0,-1,7000001,1,-1,7000000,0,1
4.24264 7000001,.5,0,7000000.5,1,0,7000000.5,.5,.5
END

middle=0,0,.5,1,0,.5,0,1,.5
cube 0 > part.obj
prints $'{\n  "Length": 4,\n*"Closed": true, "Length": 4, "Points": \[\[1, 0, 0.5\], *' section part.obj --plane $middle --json
unchanged part.obj fails 'part.obj: --svg would overwrite the surface' section part.obj --plane $middle --svg ./part.obj
for plane in 0,0,1.01,1,0,1.01,0,1,1.01 1,-1,0,-1,1,0,0,-1,1; do  # above the cube; through one corner
  unchanged cube.svg fails 'part.obj: the plane does not cut the surface' section part.obj --plane $plane --svg cube.svg
done
rejects_usage '--plane: the three points are on one line' section part.obj --plane 7e6,7e6,0,7000001,7e6,0.1,7000002,7e6,.2
rejects_usage '--plane: three points need nine numbers' section part.obj --plane 0,0,0,1,0,0,0,1
rejects_usage "--plane: '1x' is not a number" section part.obj --plane 0,0,0,1,0,0,0,1x,0
rejects_usage '--tolerance: it is less than 0' section part.obj --plane $middle --tolerance -1

# Tetrahedra: one smaller than the usual tolerance; one with a corner close to the plane, on steep and flat edges.
while read -r top right back front plane; do
  printf 'v %s\n' "${top//,/ }" "${right//,/ }" "${back//,/ }" "${front//,/ }" > part.obj
  printf 'f %s\n' '1 2 3' '1 3 4' '1 4 2' '2 4 3' >> part.obj
  prints $'Polylines  1\nClosed     1\nLength     *' section part.obj --plane "$plane"
done << 'END'
0,0,1e-9 1e-9,0,0 0,1e-9,0 0,0,0 0,0,5e-10,1,0,5e-10,0,1,5e-10
0,0,5e-9 1,0,-1e-5 0,1,1 0,-1,1e-5 0,0,0,1,0,0,0,1,0
END

# Three faces meet at an edge, and a fourth face is close to one of them.
printf 'v %s\n' '0 0 0' '0 0 2' '1 0 0' '0 1 0' '-1 0 0' '1.01 0 0' '1.01 0 2' '2 0 0' > part.obj
printf 'f %s\n' '1 2 3' '1 2 4' '1 2 5' '6 7 8' >> part.obj
prints $'Polylines  4\nClosed     0\nLength     *' section part.obj --plane $middle
prints $'Polylines  3\nClosed     0\nLength     *' section part.obj --plane $middle --tolerance .3

while IFS='|' read -r reason text; do
  printf "v 0 0 0\nv 1 0 0\nv 0 1 1\n$text" > part.obj
  unchanged cube.svg fails "part.obj: $reason" section part.obj --plane $middle --svg cube.svg
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
