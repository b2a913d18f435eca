# Sourced by the scripts that run trw: points HOME and the XDG folders at a
# fresh temporary folder, removed at exit, so that working copies and
# per-user settings never touch the real home.
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME="$home"
export XDG_DATA_HOME="$home/.local/share"
export XDG_CONFIG_HOME="$home/.config"
export XDG_CACHE_HOME="$home/.cache"
export XDG_RUNTIME_DIR="$home/.runtime"
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
