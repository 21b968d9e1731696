# fish completion for cutroom. The command tells what may follow; the first line of its answer says
# whether paths may, the others are "candidate<TAB>meaning".

function __cutroom_complete
    set -l typed (commandline -ct)
    set -l words (commandline -opc)
    # fish filters by what was typed; the command only needs to know whether an option begins.
    string match -q -- '-*' "$typed"; and set -a words "$typed"; or set -a words ''
    set -l answer ($words[1] __complete $words[2..-1] 2>/dev/null)
    switch "$answer[1]"
        case :files
            __fish_complete_path "$typed"
        case :folders
            __fish_complete_directories "$typed"
    end
    set -e answer[1]
    printf '%s\n' $answer
end

complete -c cutroom -f -a '(__cutroom_complete)'
