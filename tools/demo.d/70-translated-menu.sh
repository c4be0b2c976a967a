# shellcheck shell=bash
say "translated_menu shows a menu in the user's language"
mkdir -p "$DEMO_WORK/locale/de" "$DEMO_WORK/locale/en"
cat >"$DEMO_WORK/locale/de/menu.properties" <<'TEXTS'
# what is not here is shown by its key
file.open =Öffnen
file.close=Schließen\t(Strg+W)
TEXTS
cat >"$DEMO_WORK/locale/en/menu.properties" <<'TEXTS'
file.open=Open
file.close=Close\t(Ctrl+W)
help.about=About
TEXTS
unset LC_ALL LC_MESSAGES
export LANG=en_GB.UTF-8
LANGUAGE=cs:de_AT show translated_menu "$DEMO_WORK/locale" | tee "$DEMO_WORK/menu"
grep -qx 'file.open: Öffnen' "$DEMO_WORK/menu"
grep -qx 'help.about: help.about' "$DEMO_WORK/menu"
LANGUAGE='' show translated_menu "$DEMO_WORK/locale" | tee "$DEMO_WORK/menu"
grep -qx 'help.about: About' "$DEMO_WORK/menu"
# An Icelandic user gets what the fallback finds.
show translated_menu "$DEMO_WORK/locale" is_IS | tee "$DEMO_WORK/menu"
grep -qx 'file.open: Open' "$DEMO_WORK/menu"
