#!/bin/sh
# Writes the surface of an open pit as Wavefront OBJ: benches, and a ramp that winds down through their faces, three
# benches in a turn. The points on each ray to the centre are the ground, and for each bench its crest, the outer and the
# inner side of the ramp (the same point where there is no ramp) and its toe. The last toe is the edge of the floor.
LC_ALL=C exec awk 'BEGIN {
  rays = 48; benches = 7; height = 12; face = 7; berm = 6; ramp = 14
  for (i = 1; i <= rays; ++i) {
    turn = i / rays
    # The ramp makes the pit narrower by its width in each turn, and the crest winds outwards by as much.
    radius = 186 + ramp * (1 - turn)
    put(260 - 12 * cos(4 * pi() * turn), 1200 + 5 * sin(2 * pi() * turn) + 3 * cos(6 * pi() * turn))
    for (k = 0; k < benches; ++k) {
      top = 1200 - k * height
      down = 3 * turn - k  # how far down the face the ramp is here, as a fraction
      while (down <= 0) down += 3
      while (down > 3) down -= 3
      width = down <= 1 ? ramp : 0
      if (down > 1) down = down < 2 ? 1 : 0
      put(radius, top)
      put(radius -= down * face, top - down * height)
      put(radius -= width, top - down * height)
      put(radius -= (1 - down) * face, top - height)
      radius -= berm
    }
  }
  points = count / rays
  turn = 0
  put(0, 1200 - benches * height)
  for (i = 0; i < rays; ++i) {
    here = i * points
    next_ray = (i + 1) % rays * points
    for (j = 1; j < points; ++j) print "f", here + j, here + j + 1, next_ray + j + 1, next_ray + j
    print "f", here + points, count, next_ray + points
  }
}
function pi() { return atan2(0, -1) }
function put(distance, elevation) {
  angle = 2 * pi() * turn
  printf "v %.2f %.2f %.2f\n", 512300 + 1.25 * distance * cos(angle), 6741800 + distance * sin(angle), elevation
  ++count
}'
