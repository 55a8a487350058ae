# Completion of kd_db for fish.
set -l commands show list memory script load import query
set -l none "not __fish_seen_subcommand_from $commands"
complete -c kd_db -f
complete -c kd_db -s h -l help -d 'Print the help and exit'
complete -c kd_db -n "$none" -l version -d 'Print the version and exit'

complete -c kd_db -n "$none" -a show -d 'Show the header and the columns of a table'
complete -c kd_db -n "$none" -a list -d 'List the records of a table'
complete -c kd_db -n "$none" -a memory -d 'List an xBase memory file'
complete -c kd_db -n "$none" -a script -d 'Write the SQL script of a .dbf table'
complete -c kd_db -n "$none" -a load -d 'Load a table into a database'
complete -c kd_db -n "$none" -a import -d 'Run an SQL script'
complete -c kd_db -n "$none" -a query -d 'Run one SQL statement'

complete -c kd_db -n "__fish_seen_subcommand_from $commands" -F
complete -c kd_db -n '__fish_seen_subcommand_from show list load' -l columns -x -d 'Column positions of a .txt table'
complete -c kd_db -n '__fish_seen_subcommand_from list load' -l unquote -d 'Take quotes off names and values'
complete -c kd_db -n '__fish_seen_subcommand_from list' -l deleted -d 'List deleted records too'
complete -c kd_db -n '__fish_seen_subcommand_from script' -l key -x -d 'Begin with an automatic key of this name'
complete -c kd_db -n '__fish_seen_subcommand_from script' -l definition-only -d 'Leave the records out'
complete -c kd_db -n '__fish_seen_subcommand_from load import' -l into -r -F -d 'The SQLite file'
complete -c kd_db -n '__fish_seen_subcommand_from load' -l table -x -d 'The table to make'
