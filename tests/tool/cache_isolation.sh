#!/bin/sh
# usage: cache_isolation.sh OVSEL - a hostile cache file is refused by both readers, and from the moment it is
# opened nothing else is opened and nobody is called. Skipped where nothing can be traced.
set -eu
tool=$1
# The leak checker cannot work under a tracer.
export ASAN_OPTIONS=detect_leaks=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
strace -qq -o /dev/null true 2>/dev/null || exit 77

mkdir box
echo secret >secret
entity="<!ENTITY e SYSTEM \"file://$work/secret\">"
use='<Quorrant><D name="box"><F name="&e;"/></D></Quorrant>'
printf '<Quorrant><D name="a"><F name="x.sv"/></D></Quorrant>' >good.xml
printf '<!DOCTYPE Quorrant [%s]>%s' "$entity" "$use" >bad_entity.xml
printf '<!DOCTYPE Quorrant SYSTEM "file://%s/secret">%s' "$work" "$use" >bad_type.xml
printf '<!DOCTYPE Quorrant SYSTEM "http://127.0.0.1:9/x.dtd"><Quorrant/>' >bad_address.xml
printf '<!DOCTYPE Quorrant [<!ENTITY %% e SYSTEM "file://%s/secret"> %%e;]><Quorrant/>' "$work" >bad_parameter.xml
printf '<Quorrant xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:noNamespaceSchemaLocation="secret"><X/></Quorrant>' >bad_schema.xml
printf '<?xml-stylesheet href="secret"?><Quorrant xmlns:x="http://www.w3.org/2001/XInclude"><x:include href="secret"/></Quorrant>' >bad_include.xml
printf '<Quorrant><D name="a"><F name="x' >bad_end.xml

status=0
for mode in hooks vfs; do
    for file in good.xml bad_*.xml; do
        result=0
        PATH_MGR_MODE=$mode strace -f -qq -e trace=open,openat,openat2,creat,execve,socket,connect,sendto -o log \
            "$tool" which x --no-cwd -p box --cache "$file" --prefix . >out 2>&1 || result=$?
        # The tool looks into a refused file once more, to say what is wrong with it.
        sed -e "1,/$file/d" -e "/$file/d" -e '/+++/d' log >behind
        case $file in
        good.xml) [ "$result" -lt 2 ] || { echo "$mode: $file is refused"; cat out; status=1; } ;;
        *)
            [ "$result" -eq 3 ] || { echo "$mode: $file ends with $result"; cat out; status=1; }
            if grep -q secret out || [ -s behind ]; then
                echo "$mode: behind $file"
                cat out behind
                status=1
            fi
            ;;
        esac
    done
done
exit $status
