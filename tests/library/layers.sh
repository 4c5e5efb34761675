#!/bin/sh
# usage: layers.sh SOURCE_DIR - headers of the library include downwards only, and no file of it knows a platform.
set -eu
cd "$1/path_management/ovsel"
status=0
above="names|frame|model|reading|lookup|cache"
for layer in names frame model reading lookup; do
    above=${above#"$layer|"}
    if grep -nE "#include \"ovsel/($above)/" "$layer"/*.hpp; then
        echo "headers of $layer include from above"
        status=1
    fi
done
if grep -nE '#include "ovsel/(frame|model|reading|lookup|cache)/' names/*; then
    echo "names stand on the host alone"
    status=1
fi
if grep -rnE 'unistd|sys/|windows\.h|#if.*(__linux|_WIN32|__unix)|linux_h' . ../../include ../../host_interfaces |
    grep -v 'ovsel.hpp:.*linux_hooks'; then
    echo "a platform shows"
    status=1
fi
if grep -rn 'frame/pathmgr.hpp' . | grep -v '^./frame/'; then
    echo "PathMgr is reached around IPathManager"
    status=1
fi
exit $status
