# To be sourced. main_suites [TYPE] prints Debian's main and updates entries of the system's apt configuration in
# one-line format, as entries of TYPE: deb (the default) or deb-src.
main_suites() {
    local codename file type=${1:-deb}
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$file" ] || continue
        awk -v c="$codename" -v type="$type" '
            $1 == "deb" { i = 2; if ($2 ~ /^\[/) { while ($i !~ /\]$/) i++; i++ }
            if ($(i + 1) == c || $(i + 1) == c "-updates") { sub(/^[[:space:]]*deb/, type); print } }' "$file"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -f "$file" ] || continue
        awk -v c="$codename" -v type="$type" '
            function flush(   n, s, i, opt) {
                if (types ~ /(^| )deb( |$)/ && enabled != "no") {
                    n = split(suites, s, " ")
                    opt = signed != "" ? "[signed-by=" signed "] " : ""
                    for (i = 1; i <= n; i++)
                        if (s[i] == c || s[i] == c "-updates") print type " " opt uris " " s[i] " " comps
                }
                types = uris = suites = comps = signed = enabled = ""
            }
            /^#/ { next }
            /^[[:space:]]*$/ { flush(); next }
            { key = $1; sub(/^[^:]*:[[:space:]]*/, "") }
            key == "Types:" { types = $0 }
            key == "URIs:" { uris = $0 }
            key == "Suites:" { suites = $0 }
            key == "Components:" { comps = $0 }
            key == "Signed-By:" { signed = $0 }
            key == "Enabled:" { enabled = $0 }
            END { flush() }' "$file"
    done
}
