# Completion of kd_db for fish. The program itself knows what fits.
function __kd_db_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l token (string replace -r '^--[^=]*=' '' -- (commandline -ct))
    for line in ($words[1] __complete $words[2..] 2>/dev/null)
        switch $line
            case ':files'
                __fish_complete_path $token
            case ':files *'
                set -l extensions (string split ' ' -- (string replace ':files ' '' -- $line))
                for file in (__fish_complete_path $token)
                    set -l ending (string lower -- (string replace -r '.*\.' '' -- (string split \t -- $file)[1]))
                    if string match -q '*/*' -- (string sub -s -1 -- (string split \t -- $file)[1])
                        or contains -- $ending $extensions
                        echo $file
                    end
                end
            case '*'
                echo $line
        end
    end
end
complete -c kd_db -f -a '(__kd_db_complete)'
