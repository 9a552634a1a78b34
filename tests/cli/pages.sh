# The pages that the command makes of itself are current, and bash completes by them.
source "$(dirname "$0")/check.bash"
docs=$(dirname "$0")/../../docs

bash "$docs/make-pages" "$CORVANE" . || fail 'make-pages'
for page in operations.md corvane.1 corvane.bash; do
    cmp "$page" "$docs/$page" || fail "docs/$page is not current: the target \`pages\` of the build renews it"
done
refuse 2 'name excludes --as' ops median --as man

source ./corvane.bash
# completes LINE WORD...: what is offered for the line, as readline takes it, is these words.
completes() {
    local COMP_LINE=$1 COMP_POINT=${#1} COMPREPLY
    shift
    _corvane
    [[ "${COMPREPLY[*]}" == "$*" ]] || fail "'$COMP_LINE' is completed by '${COMPREPLY[*]}', not '$*'"
}
COMP_WORDBREAKS=$' \t\n"'"'"'><=;|&(:'
completes 'corvane re' render recipes register
completes 'corvane --vers' --version
completes 'corvane apply a.fits --bits-scale u' unit
completes 'corvane stack a.fits --ali' --align
completes 'corvane stack a.fits --align s' stars shift
completes 'corvane -q mosaic a b --mode l' lighter
completes 'corvane apply a.fits -o out.f'
completes 'corvane apply a.fits star-' 'star-sharpen star-mask'
completes 'corvane develop a.fits --recipe ne' nebula
completes 'corvane recipes m' moon
completes 'corvane render a.fits --levels f' file
completes 'corvane apply a.fits invert median:sh' shape=
completes 'corvane apply a.fits median:shape=sq' square3 square5
completes 'corvane apply a.fits levels:min=0,m' 0,min= 0,max=
COMP_WORDBREAKS=' '
completes 'corvane apply a.fits median:shape=c' median:shape=cross
finish
