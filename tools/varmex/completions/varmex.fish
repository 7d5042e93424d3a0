# Completion of varmex in fish. The command itself knows what fits.
function __varmex_candidates
    set -l words (commandline -opc)
    set -l last (commandline -ct)
    set -l lines ($words[1] complete -- $words[2..-1] "$last" 2>/dev/null)
    if string match -q ':files*' -- $lines[1]
        __fish_complete_path "$last"
    else
        string join \n -- $lines
    end
end
complete -c varmex -k -f -a '(__varmex_candidates)'
