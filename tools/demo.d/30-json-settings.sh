# shellcheck shell=bash
say "json_settings restores an object from text, changes it and prints it"

echo '$ json_settings | tee settings.json'
json_settings | tee "$DEMO_WORK/settings.json"

python3 - "$DEMO_WORK/settings.json" <<'END'
import json, sys
settings = json.load(open(sys.argv[1], encoding="utf-8"))
assert settings["fontSize"] == 14 and settings["color"] == 4294901760, settings
assert settings["plugins"] == ["autosave", "export", "spelling"], settings
assert settings["recentFiles"][0] == "today.txt" and settings["proxy"]["port"] == 3128, settings
print("Python's json module reads the changed settings.")
END

say "a member of the wrong type is refused"
echo '{"fontSize": "large"}' >"$DEMO_WORK/broken.json"
code=0
show json_settings "$DEMO_WORK/broken.json" || code=$?
echo "exit code $code"
[[ $code -eq 1 ]]
