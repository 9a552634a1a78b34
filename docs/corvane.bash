# Completion of `corvane` for bash, made by `corvane ops --as bash`.
_corvane_words() {
    case $1 in
    'corvane options') echo '--help --version --verbose --quiet --threads' ;;
    'info options') echo '--help --verbose --quiet --threads --json' ;;
    'stats options') echo '--help --verbose --quiet --threads --rect --json --csv' ;;
    'render options') echo '--help --verbose --quiet --threads --output --overwrite --stretch --levels --size --quality --bits' ;;
    'render --stretch') echo 'asinh auto linear' ;;
    'render --levels') echo 'auto file' ;;
    'render --bits') echo '8 16' ;;
    'apply options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --recipe --save-recipe' ;;
    'apply --bits') echo '-64 -32 8 16 32' ;;
    'apply --scale') echo 'levels minmax none unit' ;;
    'apply --bits-scale') echo 'levels minmax none unit' ;;
    'apply --recipe') echo 'galaxy nebula cluster moon' ;;
    'develop options') echo '--help --verbose --quiet --threads --output --overwrite --recipe --size --quality --bits' ;;
    'develop --recipe') echo 'galaxy nebula cluster moon' ;;
    'develop --bits') echo '8 16' ;;
    'recipes options') echo '--help --verbose --quiet --threads' ;;
    'stack options') echo '--help --verbose --quiet --threads --output --overwrite --preview --stretch --coverage-map --noise-map --with-maps --reject-map --weight-map --registered --follow --both --plan --json --save-plan --band --join --bits --bits-scale --bias --dark --flat --flat-dark --pedestal --cosmetic --cosmic --bayer --filter --allow-mixed --debayer --align --reference --onto --scale --transform --star --size --search --reject-fwhm --reject-stars --reject-background --combine --reject --low --high --iterations --grow --method --normalise --weight --canvas --coverage --interpolate --drizzle --drop --drop-shape --report --masters --memory' ;;
    'stack --stretch') echo 'asinh auto linear' ;;
    'stack --bits') echo '-64 -32 8 16 32' ;;
    'stack --bits-scale') echo 'levels minmax none unit' ;;
    'stack --bayer') echo 'RGGB GRBG GBRG BGGR none' ;;
    'stack --debayer') echo 'edge-aware linear bilinear' ;;
    'stack --align') echo 'stars shift none' ;;
    'stack --transform') echo 'auto similarity affine homography distortion' ;;
    'stack --combine') echo 'mean median sum max min' ;;
    'stack --reject') echo 'auto none sigma winsorized linear-fit esd mad minmax' ;;
    'stack --method') echo 'median clipped-median clipped-mean' ;;
    'stack --normalise') echo 'none offset scale both local' ;;
    'stack --weight') echo 'none noise fwhm stars snr' ;;
    'stack --canvas') echo 'reference union common' ;;
    'stack --coverage') echo 'any all' ;;
    'stack --interpolate') echo 'bilinear bicubic lanczos3 lanczos4' ;;
    'stack --drop-shape') echo 'square point' ;;
    'stack --report') echo '.csv .html' ;;
    'register options') echo '--help --verbose --quiet --threads --bias --dark --flat --flat-dark --pedestal --cosmetic --cosmic --bayer --filter --allow-mixed --debayer --align --reference --onto --scale --transform --star --size --search --reject-fwhm --reject-stars --reject-background --report --masters --memory' ;;
    'register --bayer') echo 'RGGB GRBG GBRG BGGR none' ;;
    'register --debayer') echo 'edge-aware linear bilinear' ;;
    'register --align') echo 'stars shift none' ;;
    'register --transform') echo 'auto similarity affine homography distortion' ;;
    'register --report') echo '.csv .html' ;;
    'composite options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --mode --ratio --display --clamp --fraction --radius --rect --align --points --overlay-points --box --dx --dy --angle' ;;
    'composite --bits') echo '-64 -32 8 16 32' ;;
    'composite --scale') echo 'levels minmax none unit' ;;
    'composite --bits-scale') echo 'levels minmax none unit' ;;
    'composite --mode') echo 'sum mean blend difference product quotient absdiff max min desaturate' ;;
    'composite --align') echo 'none points' ;;
    'mosaic options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --mode --key --average --display --background --align --points --second-points --box --dx --dy --angle' ;;
    'mosaic --bits') echo '-64 -32 8 16 32' ;;
    'mosaic --scale') echo 'levels minmax none unit' ;;
    'mosaic --bits-scale') echo 'levels minmax none unit' ;;
    'mosaic --mode') echo 'over key lighter darker under' ;;
    'mosaic --align') echo 'none points' ;;
    'match options') echo '--help --verbose --quiet --threads --json --start --range --least' ;;
    'rgb options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --align --at --size --range --box --points --points2 --points3 --shift1 --angle1 --shift2 --angle2 --shift3 --angle3 --balance --outside' ;;
    'rgb --bits') echo '-64 -32 8 16 32' ;;
    'rgb --scale') echo 'levels minmax none unit' ;;
    'rgb --bits-scale') echo 'levels minmax none unit' ;;
    'rgb --align') echo 'stars none shift points' ;;
    'rgb --balance') echo 'none sky stars light' ;;
    'cmy options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --align --at --size --range --box --points --points2 --points3 --shift1 --angle1 --shift2 --angle2 --shift3 --angle3 --balance --outside' ;;
    'cmy --bits') echo '-64 -32 8 16 32' ;;
    'cmy --scale') echo 'levels minmax none unit' ;;
    'cmy --bits-scale') echo 'levels minmax none unit' ;;
    'cmy --align') echo 'stars none shift points' ;;
    'cmy --balance') echo 'none sky stars light' ;;
    'lrgb options') echo '--help --verbose --quiet --threads --output --overwrite --bits --bits-scale --align --at --size --range --box --points --points2 --shift1 --angle1 --shift2 --angle2 --average --scale' ;;
    'lrgb --bits') echo '-64 -32 8 16 32' ;;
    'lrgb --bits-scale') echo 'levels minmax none unit' ;;
    'lrgb --align') echo 'stars none shift points' ;;
    'palette options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --align --balance --outside' ;;
    'palette --bits') echo '-64 -32 8 16 32' ;;
    'palette --scale') echo 'levels minmax none unit' ;;
    'palette --bits-scale') echo 'levels minmax none unit' ;;
    'palette --align') echo 'stars none' ;;
    'palette --balance') echo 'none sky stars light' ;;
    'palette palette') echo 'sho hoo hos' ;;
    'continuum options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --align --factor --match' ;;
    'continuum --bits') echo '-64 -32 8 16 32' ;;
    'continuum --scale') echo 'levels minmax none unit' ;;
    'continuum --bits-scale') echo 'levels minmax none unit' ;;
    'continuum --align') echo 'stars none' ;;
    'continuum --match') echo 'width none' ;;
    'split options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --component' ;;
    'split --bits') echo '-64 -32 8 16 32' ;;
    'split --scale') echo 'levels minmax none unit' ;;
    'split --bits-scale') echo 'levels minmax none unit' ;;
    'split --component') echo 'r g b c m y' ;;
    'star-mask options') echo '--help --verbose --quiet --threads --output --overwrite --bits --scale --bits-scale --sigmas --limit --grow --soft --min --max --invert --plane' ;;
    'star-mask --bits') echo '-64 -32 8 16 32' ;;
    'star-mask --scale') echo 'levels minmax none unit' ;;
    'star-mask --bits-scale') echo 'levels minmax none unit' ;;
    'stars options') echo '--help --verbose --quiet --threads --sigmas --limit --plane --at --map --json --csv --plot' ;;
    'find-stars options') echo '--help --verbose --quiet --threads --sigmas --limit --plane --saturation --map --json --csv' ;;
    'psf options') echo '--help --verbose --quiet --threads --json --output --overwrite --bits --scale --bits-scale --model --zones --size --plane --saturation' ;;
    'psf --bits') echo '-64 -32 8 16 32' ;;
    'psf --scale') echo 'levels minmax none unit' ;;
    'psf --bits-scale') echo 'levels minmax none unit' ;;
    'psf --model') echo 'gaussian moffat stars' ;;
    'ops options') echo '--help --verbose --quiet --threads --json --as' ;;
    'ops --as') echo 'bash man markdown' ;;
    'help options') echo '--help' ;;
    'invert:') echo 'rect= mask= strength=' ;;
    'auto-levels:') echo 'low= high= per-plane= rect=' ;;
    'auto-levels per-plane') echo 'yes no' ;;
    'levels:') echo 'min= max= plane=' ;;
    'clip:') echo 'min= max= mask= strength=' ;;
    'autostretch:') echo 'shadows= target= linked= curve= mask= strength=' ;;
    'autostretch linked') echo 'yes no' ;;
    'autostretch curve') echo 'mtf asinh' ;;
    'mtf:') echo 'mid= low= high= rect= mask= strength=' ;;
    'asinh:') echo 'k= per-plane= low= high= rect= mask= strength=' ;;
    'asinh per-plane') echo 'yes no' ;;
    'log:') echo 'k= low= high= rect= mask= strength=' ;;
    'gamma:') echo 'g= low= high= rect= mask= strength=' ;;
    'ghs:') echo 'd= b= lp= sp= hp= inverse= low= high= rect= mask= strength=' ;;
    'ghs inverse') echo 'yes no' ;;
    'equalise:') echo 'per-plane= low= high= rect= mask= strength=' ;;
    'equalise per-plane') echo 'yes no' ;;
    'brightness:') echo 'brightness= contrast= centre= rect= mask= strength=' ;;
    'balance:') echo 'red= green= blue= rect= mask= strength=' ;;
    'curve:') echo 'points= file= red= green= blue= entries= rect= mask= strength=' ;;
    'reduce-tone:') echo 'levels= rect= mask= strength=' ;;
    'false-color:') echo 'low= high= map= cycles= rect=' ;;
    'false-color map') echo 'rainbow spectrum ice heat 0 1 2 3' ;;
    'add:') echo 'value= rect= mask= strength=' ;;
    'subtract:') echo 'value= clip-negative= rect= mask= strength=' ;;
    'subtract clip-negative') echo 'yes no' ;;
    'multiply:') echo 'value= rect= mask= strength=' ;;
    'divide:') echo 'value= rect= mask= strength=' ;;
    'dark:') echo 'file= mask= strength=' ;;
    'flat:') echo 'file= mask= strength=' ;;
    'overscan:') echo 'rect= clip= mask= strength=' ;;
    'overscan clip') echo 'yes no' ;;
    'vignette:') echo 'k= base= x= y= rect= mask= strength=' ;;
    'neutral-sky:') echo 'value= mask= strength=' ;;
    'white-balance:') echo 'red= green= blue= mask= strength=' ;;
    'scnr:') echo 'mode= strength= mask=' ;;
    'scnr mode') echo 'average maximum' ;;
    'saturate:') echo 'gain= red= green= yellow= blue= rect= mask= strength=' ;;
    'debayer:') echo 'pattern= method=' ;;
    'debayer pattern') echo 'auto RGGB GRBG GBRG BGGR' ;;
    'debayer method') echo 'edge-aware linear bilinear' ;;
    'split:') echo 'component=' ;;
    'split component') echo 'r g b c m y' ;;
    'mean:') echo 'shape= weight= rect= mask= strength=' ;;
    'mean shape') echo 'cross square3 square5 0 1 2' ;;
    'mean-keep-edges:') echo 'shape= weight= rect= mask= strength=' ;;
    'mean-keep-edges shape') echo 'cross square3 square5 0 1 2' ;;
    'median:') echo 'shape= rect= mask= strength=' ;;
    'median shape') echo 'cross square3 square5 0 1 2' ;;
    'rank:') echo 'shape= rank= rect= mask= strength=' ;;
    'rank shape') echo 'cross square3 square5 0 1 2' ;;
    'minimum:') echo 'shape= rect= mask= strength=' ;;
    'minimum shape') echo 'cross square3 square5 0 1 2' ;;
    'maximum:') echo 'shape= rect= mask= strength=' ;;
    'maximum shape') echo 'cross square3 square5 0 1 2' ;;
    'gaussian:') echo 'sigma= rect= mask= strength=' ;;
    'star-sharpen:') echo 'shape= rank= threshold= keep-peaks= rect= mask= strength=' ;;
    'star-sharpen shape') echo 'cross square3 square5 0 1 2' ;;
    'star-sharpen keep-peaks') echo 'yes no' ;;
    'sharpen:') echo 'shape= strength= rect= mask=' ;;
    'sharpen shape') echo 'cross square3 square5 0 1 2' ;;
    'sharpen-edges:') echo 'shape= strength= rect= mask=' ;;
    'sharpen-edges shape') echo 'cross square3 square5 0 1 2' ;;
    'laplacian:') echo 'shape= rect= mask= strength=' ;;
    'laplacian shape') echo 'cross square3 weighted 0 1 2' ;;
    'unsharp:') echo 'amount= shape= weight= threshold= rect= mask= strength=' ;;
    'unsharp shape') echo 'cross square3 square5 0 1 2' ;;
    'lucy:') echo 'sigma= fwhm= gain= read-noise= iterations= rect= psf= damping= protect= saturation= mask= strength=' ;;
    'lucy fwhm') echo 'auto' ;;
    'lucy psf') echo 'auto' ;;
    'lucy protect') echo 'yes no' ;;
    'maxent:') echo 'sigma= fwhm= noise= iterations= resample= rect= psf= mask= strength=' ;;
    'maxent fwhm') echo 'auto' ;;
    'maxent resample') echo 'yes no' ;;
    'maxent psf') echo 'auto' ;;
    'wiener:') echo 'sigma= fwhm= noise= rect= psf= mask= strength=' ;;
    'wiener fwhm') echo 'auto' ;;
    'wiener psf') echo 'auto' ;;
    'ddp:') echo 'offset= weight= plane= rect= mask= strength=' ;;
    'ddp plane') echo 'red green blue all' ;;
    'background:') echo 'mode= model= degree= model-file= mask= strength=' ;;
    'background mode') echo 'subtract divide' ;;
    'background model') echo 'polynomial spline mesh' ;;
    'smooth-background:') echo 'level= shape= weight= rect= mask= strength=' ;;
    'smooth-background shape') echo 'cross square3 square5 0 1 2' ;;
    'posterize:') echo 'steps= rect= mask= strength=' ;;
    'hot-pixels:') echo 'shape= threshold= hot= cool= rect= mask= strength=' ;;
    'hot-pixels shape') echo 'cross square3 square5 0 1 2' ;;
    'hot-pixels hot') echo 'yes no' ;;
    'hot-pixels cool') echo 'yes no' ;;
    'cosmic-rays:') echo 'sigma= fraction= limit= gain= read-noise= iterations= mask-file= mask= strength=' ;;
    'fill:') echo 'with= value= mask= strength=' ;;
    'fill with') echo 'neighbours sky value' ;;
    'contour:') echo 'levels= overlay= rect= mask= strength=' ;;
    'contour overlay') echo 'yes no' ;;
    'star-mask:') echo 'sigmas= limit= grow= soft= min= max= invert= plane=' ;;
    'star-mask invert') echo 'yes no' ;;
    'draw-line:') echo 'x1= y1= x2= y2= thickness= value= units= plane= rect= mask= strength=' ;;
    'draw-line units') echo 'display raw' ;;
    'draw-text:') echo 'text= x= y= height= angle= align= thickness= value= units= plane= rect= mask= strength=' ;;
    'draw-text align') echo 'left centre right' ;;
    'draw-text units') echo 'display raw' ;;
    'flip:') echo 'direction=' ;;
    'flip direction') echo 'horizontal vertical' ;;
    'rotate:') echo 'angle= expand= background=' ;;
    'rotate expand') echo 'yes no' ;;
    'rotate90:') echo 'direction=' ;;
    'rotate90 direction') echo 'clockwise anticlockwise' ;;
    'resize:') echo 'width= height= factor=' ;;
    'bin:') echo 'x= y= keep-partial= scale-levels=' ;;
    'bin keep-partial') echo 'yes no' ;;
    'bin scale-levels') echo 'yes no' ;;
    'canvas:') echo 'width= height= anchor= background=' ;;
    'canvas anchor') echo 'top-left top top-right left centre right bottom-left bottom bottom-right' ;;
    'crop:') echo 'rect=' ;;
    'scroll:') echo 'x= y=' ;;
    'expand:') echo 'x= y=' ;;
    'commands') echo 'info stats render apply develop recipes stack register composite mosaic match rgb cmy lrgb palette continuum split star-mask stars find-stars psf ops help' ;;
    'help help') echo 'info stats render apply develop recipes stack register composite mosaic match rgb cmy lrgb palette continuum split star-mask stars find-stars psf ops help' ;;
    'steps') echo 'invert auto-levels levels clip autostretch mtf asinh log gamma ghs equalise brightness balance curve reduce-tone false-color add subtract multiply divide dark flat overscan vignette to-grey to-color neutral-sky white-balance scnr saturate lab debayer split mean mean-keep-edges median rank minimum maximum gaussian star-sharpen sharpen sharpen-edges laplacian unsharp lucy maxent wiener ddp background smooth-background posterize hot-pixels cosmic-rays fill contour star-mask draw-line draw-text flip rotate rotate90 rotate180 resize bin canvas crop scroll expand' ;;
    'ops ops') echo 'invert auto-levels levels clip autostretch mtf asinh log gamma ghs equalise brightness balance curve reduce-tone false-color add subtract multiply divide dark flat overscan vignette to-grey to-color neutral-sky white-balance scnr saturate lab debayer split mean mean-keep-edges median rank minimum maximum gaussian star-sharpen sharpen sharpen-edges laplacian unsharp lucy maxent wiener ddp background smooth-background posterize hot-pixels cosmic-rays fill contour star-mask draw-line draw-text flip rotate rotate90 rotate180 resize bin canvas crop scroll expand' ;;
    'recipes recipes') echo 'galaxy nebula cluster moon' ;;
    esac
}

# Words that may stand for what was typed, all of them behind a head.
_corvane_offer() {
    mapfile -t COMPREPLY < <(compgen -P "$2" -W "$1" -- "${typed#"$2"}")
}

# A step: its name, one of its parameters, or a value of that.
_corvane_step() {
    local head=${typed%"${typed##*[:,]}"} item=${typed##*[:,]}
    if [[ -z $head ]]; then
        _corvane_offer "$(_corvane_words steps)" ''
    elif [[ $item == *=* ]]; then
        _corvane_offer "$(_corvane_words "${typed%%:*} ${item%%=*}")" "$head${item%%=*}="
    else
        _corvane_offer "$(_corvane_words "${typed%%:*}:")" "$head"
        compopt -o nospace 2>/dev/null
    fi
}

_corvane() {
    local line=${COMP_LINE:0:COMP_POINT} typed command='' word words values breaks
    typed=${line##*[[:space:]]}
    read -ra words <<<"${line%"$typed"}"
    for word in "${words[@]:1}"; do
        [[ $word == -* ]] || { command=$word && break; }
    done
    COMPREPLY=()
    values=$(_corvane_words "$command ${words[-1]}")
    if [[ -n $command && -n $values ]]; then
        _corvane_offer "$values" ''
    elif [[ $typed == -* ]]; then
        _corvane_offer "$(_corvane_words "${command:-corvane} options")" ''
    elif [[ -z $command ]]; then
        _corvane_offer "$(_corvane_words commands)" ''
    elif [[ $command == apply && ${words[-1]} != apply && ${words[-1]} != -* ]]; then
        _corvane_step
    fi
    # Readline takes what stands before its last break as given.
    breaks=${COMP_WORDBREAKS//[^:=]/}
    [[ -z $breaks ]] || COMPREPLY=("${COMPREPLY[@]#"${typed%"${typed##*["$breaks"]}"}"}")
}
complete -o bashdefault -o default -F _corvane corvane
