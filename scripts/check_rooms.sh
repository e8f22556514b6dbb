#!/bin/sh
# The rooms of the library use each other in one direction: a file includes public headers, its own room and the
# rooms before it, and declares ahead no class of a later room. Every include of the library's own names the room
# ("lattice/Calc.h"). Another tree of the same form may be named, to see the check fail.
tree=${1:-src_lib}
lane="rooms"
. "$(dirname "$0")/lane.sh"
cd "$tree"

# From the ground up. docs/architecture.md tells what each is about.
rooms="core parallel tarn_tools tarn_locate3 tarn_octree geometry judge surface closing finish remesh outer comparison text lattice tinyply files formats
       occupancy intake cmesh extraction holes repair rmesh meshfiles choice sheets api"

# Public headers that only the named room and later ones may include; the others serve all rooms.
public="checkMesh.h:judge compareMeshes.h:comparison finishSurface.h:finish zef_files.h:files testDataGenerators.h:intake Mesh.h:meshfiles zef_formats.h:formats autoReconstruct.h:choice zef_api_functions.h:api
        remesh.h:api sourcePoints.h:api meshHoles.h:closing zef.h:api"

find . -type f \( -name '*.h' -o -name '*.cpp' \) | sed 's|^\./||' | sort | xargs awk -v rooms="$rooms" -v public="$public" '
function complain(text) {
    print FILENAME ":" FNR ": " text
    failed = 1
}
BEGIN {
    num = split(rooms, order, " ")
    for (i = 1; i <= num; ++i)
        level[order[i]] = i
    num = split(public, entries, " ")
    for (i = 1; i <= num; ++i) {
        split(entries[i], entry, ":")
        publicLevel[entry[1]] = level[entry[2]]
    }
    for (i = 1; i < ARGC; ++i) {
        split(ARGV[i], path, "/")
        name = path[2]
        if (sub(/\.h$/, "", name))
            home[name] = path[1]
    }
}
FNR == 1 {
    room = FILENAME
    if (!sub("/.*", "", room) || !(room in level))
        complain("stands in no room")
    ++files
}
/^#include "/ {
    split($0, quoted, "\"")
    target = quoted[2]
    ++includes
    if (split(target, path, "/") == 1) {
        if ((getline line < (room "/" target)) > 0)
            complain("include it with its room: " target)
        else if ((target in publicLevel) && publicLevel[target] > level[room])
            complain("upward include: " room " must not know " target)
    } else if (!(path[1] in level))
        complain("no such room: " target)
    else if (level[path[1]] > level[room])
        complain("upward include: " room " must not know " target)
}
/^(class|struct) [A-Za-z0-9_]+;/ {
    name = $2
    sub(/;.*/, "", name)
    if ((name in home) && level[home[name]] > level[room])
        complain("declares ahead what a later room holds: " home[name] "/" name ".h")
}
END {
    if (!failed)
        print "rooms: " files " files, " includes " includes, none upward"
    exit failed
}'
