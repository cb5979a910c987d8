#!/usr/bin/env bash
# What bash and fish offer at the end of a command line; zsh reads its script.
#   completions.sh FOLDER SHELL
folder=$1 shell=$2

# offers LINE: the words that may follow, one per line, without descriptions.
offers_bash() {
    # As the shell cuts a line: an equals sign is a word.
    local COMP_WORDS COMP_CWORD COMPREPLY
    read -r -a COMP_WORDS <<<"${1//=/ = }"
    [[ $1 == *" " ]] && COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _zelcam
    printf '%s\n' "${COMPREPLY[@]}"
}
offers_fish() { fish --no-config -c "source $folder/fish/zelcam.fish; complete -C '$1'" | cut -f1; }

case $shell in
    bash) source "$folder/bash/zelcam" || exit 1 ;;
    fish) fish --no-execute "$folder/fish/zelcam.fish" || exit 1 ;;
    zsh) exec zsh --no-exec "$folder/zsh/_zelcam" ;;
esac

# expect LINE WORD...: each word is offered; one behind "!" is not.
failed=0
expect() {
    local line=$1 word offered
    offered=$(offers_$shell "$line" | sed 's,/$,,')
    for word in "${@:2}"; do
        if [[ $word == !* ]]; then
            grep -qxF -e "${word#!}" <<<"$offered" && echo "'$line' offers '${word#!}'" && failed=1
        else
            grep -qxF -e "$word" <<<"$offered" || { echo "'$line' lacks '$word', offers" $offered && failed=1; }
        fi
    done
}
cd "$(mktemp -d)" && mkdir pictures && touch table.txt || exit 1
trap 'rm -r "$PWD"' EXIT
expect 'zelcam '                                     capture calibrate doctor help '!show' '!--json' '!pictures'
expect 'zelcam ca'                                   capture calibrate '!list'
expect 'zelcam help '                                capture '!--camera'
expect 'zelcam calibrate '                           show write '!capture'
expect 'zelcam text list --'                         --camera --json
expect 'zelcam capture --'                           --format --color-space --json '!--mode'
expect 'zelcam capture --format '                    tiff rgba8 '!pictures' '!--json'
expect 'zelcam capture -f p'                         png '!tiff'
expect 'zelcam stream --mode '                       every newest
expect 'zelcam capture -n 3 --out '                  pictures '!table.txt'
expect 'zelcam capture --camera '                    '!capture' '!table.txt'
expect 'zelcam calibrate write '                     table.txt
expect 'zelcam get --camera 1 EXPOSURE_TIME_'        EXPOSURE_TIME_US '!GAIN'
expect 'zelcam get GAIN HW_'                         HW_TRIGGER_ACTIVE
expect 'zelcam set GA'                               GAIN= '!GAIN'
expect 'zelcam capture --set GA'                     GAIN=
expect 'zelcam completion '                          bash zsh fish
if [ "$shell" = bash ]; then
    expect 'zelcam capture --format=t' tiff
    expect 'zelcam set GAIN=' '!GAIN='
fi
exit $failed
