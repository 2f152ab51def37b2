# Shared by ./run, ./test and the tools: progress lines and the installation of Debian packages. Sourced by bash.

step() {
    printf '\n== %s (%ss)\n' "$1" "$SECONDS"
}

# Installs the packages named in the given list files that are not there yet.
install_packages() {
    local wanted=() missing=() package
    mapfile -t wanted < <(sed -e 's/#.*//' -e '/^\s*$/d' "$@" | sort -u)
    for package in "${wanted[@]}"; do
        dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' || missing+=("$package")
    done
    if ((${#missing[@]} == 0)); then
        return 0
    fi
    local sudo=()
    if (($(id -u) != 0)); then
        sudo=(sudo)
    fi
    printf 'installing: %s\n' "${missing[*]}"
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
