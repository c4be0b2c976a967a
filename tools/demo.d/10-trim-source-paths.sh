# shellcheck shell=bash
say "trim_source_paths cuts the build root from the paths in a compiler's output"

cat >"$DEMO_WORK/compiler.log" <<'END'
C:\Mirsa\Vontal\vontal.git\VontalBase\json\qvjson.cpp(112): warning C4100: 'depth': unreferenced parameter
c:/mirsa/vontal.release64/VontalBase/zip/qvzip.cpp(7): warning C4189: 'size' is never used
C:\Mirsa\Vontal\vontal.github\other.cpp(1): warning: not below a build root
END
show cat "$DEMO_WORK/compiler.log"
echo '$ trim_source_paths <compiler.log'
trim_source_paths <"$DEMO_WORK/compiler.log"
