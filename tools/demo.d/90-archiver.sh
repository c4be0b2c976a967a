# shellcheck shell=bash
say "archiver packs what stands on this machine"
mkdir "$DEMO_WORK/tree"
bytes=0
for folder in /usr/share/doc /usr/share/perl /usr/share/mime /usr/share/i18n /usr/share/cmake-* /usr/include /usr/lib/gcc; do
    [[ -d $folder && $bytes -lt 250000000 ]] || continue
    cp -r "$folder" "$DEMO_WORK/tree/"
    # Links are left out of an archive, and names beyond ASCII cannot be stored.
    find "$DEMO_WORK/tree" -type l -delete
    LC_ALL=C find "$DEMO_WORK/tree" -depth -name '*[! -~]*' -exec rm -r {} +
    bytes=$(du -sb "$DEMO_WORK/tree" | cut -f 1)
done
cd "$DEMO_WORK"
echo "$(find tree -type f | wc -l) files in $(find tree -type d | wc -l) directories, $bytes bytes"
show archiver create tree.zip tree

say "other programs read it"
show archiver list tree.zip >list.txt
tail -n 3 list.txt
python3 - >python.txt <<'END'
import zipfile
with zipfile.ZipFile("tree.zip") as archive:
    assert archive.testzip() is None
    print(f"Python's zipfile finds {len(archive.infolist())} items, "
          f"{sum(item.file_size for item in archive.infolist())} bytes, and every checksum right")
END
cat python.txt
7z t tree.zip | grep -E 'Everything|Files:|Folders:'
items=$(find tree | wc -l)
[[ "$(tail -n 1 list.txt)" == "$items items, "* ]]
grep -q "finds $items items" python.txt

say "archiver unpacks it, and every byte is the same"
show archiver extract tree.zip checked
show archiver extract --raw tree.zip raw
diff -r tree checked/tree
diff -r tree raw/tree
bsdtar -c --format zip -f other.zip tree
show archiver extract other.zip other
diff -r tree other/tree
echo "no difference: checked, raw, and from an archive that bsdtar has written"

say "an archive from a stranger is refused, and nothing of it is written"
python3 - <<'END'
import zipfile
with zipfile.ZipFile("strange.zip", "w") as archive:
    archive.writestr("harmless.txt", "harmless")
    archive.writestr("../../harm.txt", "harm")
END
code=0
show archiver extract strange.zip strange || code=$?
echo "exit code $code"
[[ $code -eq 1 && ! -e strange ]]

say "Ctrl-C ends the work and leaves no half an archive"
for what in "create half.zip tree" "extract tree.zip half" "extract --raw tree.zip half"; do
    code=0
    # Without --foreground timeout interrupts its whole group as well, and the second interrupt ends the program at once.
    # shellcheck disable=SC2086
    timeout --foreground --preserve-status --signal INT 0.5 archiver $what || code=$?
    echo "exit code $code"
    [[ $code -eq 1 && ! -e half.zip && ! -e half.zip.part ]]
done

say "on a terminal it shows how far it is"
script -qec "archiver create bar.zip tree" /dev/null | tr '\r' '\n' | grep -F 's left' | tail -n 2
