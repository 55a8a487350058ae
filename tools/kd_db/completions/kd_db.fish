# Completion of kd_db for fish. The program itself knows what fits.

# The word under the cursor as the program would get it: without the mark that begins a quotation, and backslashes.
function __kd_db_current
    set -l token (commandline -ct)
    if string match -qr '^["\']' -- $token
        string sub -s 2 -- $token
    else
        set -l plain (string unescape -- $token)
        test (count $plain) -gt 0; or set plain $token
        echo -- $plain
    end
end

function __kd_db_complete
    set -l words (commandline -opc) (__kd_db_current)
    set -l token $words[-1]
    set -l lead (string match -r '^--[^=]*=' -- $token)
    test -n "$lead"; and set token (string replace -- $lead '' $token)
    for line in ($words[1] __complete $words[2..] 2>/dev/null)
        switch $line
            case ':files'
                for file in (__fish_complete_path $token)
                    echo -- "$lead$file"
                end
            case ':files *'
                set -l extensions (string split ' ' -- (string replace ':files ' '' -- $line))
                for file in (__fish_complete_path $token)
                    set -l ending (string lower -- (string replace -r '.*\.' '' -- (string split \t -- $file)[1]))
                    if string match -q '*/*' -- (string sub -s -1 -- (string split \t -- $file)[1])
                        or contains -- $ending $extensions
                        echo -- "$lead$file"
                    end
                end
            case '*'
                echo $line
        end
    end
end
complete -c kd_db -f -a '(__kd_db_complete)'
