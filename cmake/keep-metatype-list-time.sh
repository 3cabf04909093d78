#!/bin/sh
# keep-metatype-list-time.sh LIST: after Qt's metatype extraction rewrote LIST (the moc JSON
# files of a target), give it back the time of its last real change when neither it nor any
# JSON file it names changed since; otherwise remember this version. See LumoraMetatypes.cmake.
list=$1
saved=$1.unchanged
if cmp -s "$list" "$saved" && [ -z "$(find $(cat "$list") -newer "$saved" 2>/dev/null | head -n 1)" ]; then
  touch -r "$saved" "$list"
else
  cp -p "$list" "$saved"
fi
