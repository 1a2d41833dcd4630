# fish completion for velloran

complete -c velloran -f
complete -c velloran -s p -l protocol -x -a '1 2' -d 'Dialect'
complete -c velloran -s c -l close -x -d 'End the export after so many events'
complete -c velloran -s d -l done -x -d 'DONE announces so many minutes'
complete -c velloran -s s -x -d 'Seconds of pause after each file request'
complete -c velloran -s e -l event -d 'Ask for an event that does not exist'
complete -c velloran -s f -l file -d 'Ask for the last file wrongly'
complete -c velloran -s t -l transport -d 'Make transfers fail'
complete -c velloran -s r -l rehash -d 'Ask for the last file again, with a new hash'
complete -c velloran -s x -l xfer -d 'Ask for the last file twice in a row'
complete -c velloran -s z -l size -d 'Announce messages longer than they are'
complete -c velloran -s g -l config -d 'Send a bogus configuration, and nothing else'
complete -c velloran -s u -l upgrade -d 'Order a software upgrade first'
complete -c velloran -s h -l help -d 'Usage text'
