* expected values from tests/reference/groups_ref.py (pandas, numpy)
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
duplicates tag s h, generate(dup)
generate long obs = _n
assert dup == 26 if obs == 1
assert dup == 26 if obs == 2
assert dup == 26 if obs == 3
assert dup == 13 if obs == 4
assert dup == 26 if obs == 5
assert dup == 25 if obs == 6
assert dup == 25 if obs == 7
assert dup == 26 if obs == 8
assert dup == 12 if obs == 9
assert dup == 26 if obs == 10
assert dup == 26 if obs == 11
assert dup == 26 if obs == 12
assert dup == 25 if obs == 13
assert dup == 12 if obs == 14
assert dup == 25 if obs == 15
assert dup == 26 if obs == 16
assert dup == 26 if obs == 17
assert dup == 26 if obs == 18
assert dup == 13 if obs == 19
assert dup == 26 if obs == 20
assert dup == 25 if obs == 21
assert dup == 25 if obs == 22
assert dup == 26 if obs == 23
assert dup == 12 if obs == 24
assert dup == 26 if obs == 25
assert dup == 26 if obs == 26
assert dup == 26 if obs == 27
assert dup == 25 if obs == 28
assert dup == 12 if obs == 29
assert dup == 25 if obs == 30
assert dup == 26 if obs == 31
assert dup == 26 if obs == 32
assert dup == 26 if obs == 33
assert dup == 13 if obs == 34
assert dup == 26 if obs == 35
assert dup == 25 if obs == 36
assert dup == 25 if obs == 37
assert dup == 26 if obs == 38
assert dup == 12 if obs == 39
assert dup == 26 if obs == 40
assert dup == 26 if obs == 41
assert dup == 26 if obs == 42
assert dup == 25 if obs == 43
assert dup == 12 if obs == 44
assert dup == 25 if obs == 45
assert dup == 26 if obs == 46
assert dup == 26 if obs == 47
assert dup == 26 if obs == 48
assert dup == 13 if obs == 49
assert dup == 26 if obs == 50
assert dup == 25 if obs == 51
assert dup == 25 if obs == 52
assert dup == 26 if obs == 53
assert dup == 12 if obs == 54
assert dup == 26 if obs == 55
assert dup == 26 if obs == 56
assert dup == 26 if obs == 57
assert dup == 25 if obs == 58
assert dup == 12 if obs == 59
assert dup == 25 if obs == 60
assert dup == 26 if obs == 61
assert dup == 26 if obs == 62
assert dup == 26 if obs == 63
assert dup == 13 if obs == 64
assert dup == 26 if obs == 65
assert dup == 25 if obs == 66
assert dup == 25 if obs == 67
assert dup == 26 if obs == 68
assert dup == 12 if obs == 69
assert dup == 26 if obs == 70
assert dup == 26 if obs == 71
assert dup == 26 if obs == 72
assert dup == 25 if obs == 73
assert dup == 12 if obs == 74
assert dup == 25 if obs == 75
assert dup == 26 if obs == 76
assert dup == 26 if obs == 77
assert dup == 26 if obs == 78
assert dup == 13 if obs == 79
assert dup == 26 if obs == 80
assert dup == 25 if obs == 81
assert dup == 25 if obs == 82
assert dup == 26 if obs == 83
assert dup == 12 if obs == 84
assert dup == 26 if obs == 85
assert dup == 26 if obs == 86
assert dup == 26 if obs == 87
assert dup == 25 if obs == 88
assert dup == 12 if obs == 89
assert dup == 25 if obs == 90
assert dup == 26 if obs == 91
assert dup == 26 if obs == 92
assert dup == 26 if obs == 93
assert dup == 13 if obs == 94
assert dup == 26 if obs == 95
assert dup == 25 if obs == 96
assert dup == 25 if obs == 97
assert dup == 26 if obs == 98
assert dup == 12 if obs == 99
assert dup == 26 if obs == 100
assert dup == 26 if obs == 101
assert dup == 26 if obs == 102
assert dup == 25 if obs == 103
assert dup == 12 if obs == 104
assert dup == 25 if obs == 105
assert dup == 26 if obs == 106
assert dup == 26 if obs == 107
assert dup == 26 if obs == 108
assert dup == 13 if obs == 109
assert dup == 26 if obs == 110
assert dup == 25 if obs == 111
assert dup == 25 if obs == 112
assert dup == 26 if obs == 113
assert dup == 12 if obs == 114
assert dup == 26 if obs == 115
assert dup == 26 if obs == 116
assert dup == 26 if obs == 117
assert dup == 25 if obs == 118
assert dup == 12 if obs == 119
assert dup == 25 if obs == 120
assert dup == 26 if obs == 121
assert dup == 26 if obs == 122
assert dup == 26 if obs == 123
assert dup == 13 if obs == 124
assert dup == 26 if obs == 125
assert dup == 25 if obs == 126
assert dup == 25 if obs == 127
assert dup == 26 if obs == 128
assert dup == 12 if obs == 129
assert dup == 26 if obs == 130
assert dup == 26 if obs == 131
assert dup == 26 if obs == 132
assert dup == 25 if obs == 133
assert dup == 12 if obs == 134
assert dup == 25 if obs == 135
assert dup == 26 if obs == 136
assert dup == 26 if obs == 137
assert dup == 26 if obs == 138
assert dup == 13 if obs == 139
assert dup == 26 if obs == 140
assert dup == 25 if obs == 141
assert dup == 25 if obs == 142
assert dup == 26 if obs == 143
assert dup == 12 if obs == 144
assert dup == 26 if obs == 145
assert dup == 26 if obs == 146
assert dup == 26 if obs == 147
assert dup == 25 if obs == 148
assert dup == 12 if obs == 149
assert dup == 25 if obs == 150
assert dup == 26 if obs == 151
assert dup == 26 if obs == 152
assert dup == 26 if obs == 153
assert dup == 13 if obs == 154
assert dup == 26 if obs == 155
assert dup == 25 if obs == 156
assert dup == 25 if obs == 157
assert dup == 26 if obs == 158
assert dup == 12 if obs == 159
assert dup == 26 if obs == 160
assert dup == 26 if obs == 161
assert dup == 26 if obs == 162
assert dup == 25 if obs == 163
assert dup == 12 if obs == 164
assert dup == 25 if obs == 165
assert dup == 26 if obs == 166
assert dup == 26 if obs == 167
assert dup == 26 if obs == 168
assert dup == 13 if obs == 169
assert dup == 26 if obs == 170
assert dup == 25 if obs == 171
assert dup == 25 if obs == 172
assert dup == 26 if obs == 173
assert dup == 12 if obs == 174
assert dup == 26 if obs == 175
assert dup == 26 if obs == 176
assert dup == 26 if obs == 177
assert dup == 25 if obs == 178
assert dup == 12 if obs == 179
assert dup == 25 if obs == 180
assert dup == 26 if obs == 181
assert dup == 26 if obs == 182
assert dup == 26 if obs == 183
assert dup == 13 if obs == 184
assert dup == 26 if obs == 185
assert dup == 25 if obs == 186
assert dup == 25 if obs == 187
assert dup == 26 if obs == 188
assert dup == 12 if obs == 189
assert dup == 26 if obs == 190
assert dup == 26 if obs == 191
assert dup == 26 if obs == 192
assert dup == 25 if obs == 193
assert dup == 12 if obs == 194
assert dup == 25 if obs == 195
assert dup == 26 if obs == 196
assert dup == 26 if obs == 197
assert dup == 26 if obs == 198
assert dup == 13 if obs == 199
assert dup == 26 if obs == 200
duplicates drop s h, force
assert _N == 9
assert obs == 1 | obs == 2 | obs == 3 in 1/3
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
freqdata s g, percent(pc)
assert _N == 21
assert s == "ab" & g == 0 & _freq == 11 in 1
assert reldif(pc, 5.5) < 1e-6 in 1
assert s == "ab" & g == 1 & _freq == 12 in 2
assert reldif(pc, 6.0) < 1e-6 in 2
assert s == "ab" & g == 2 & _freq == 11 in 3
assert reldif(pc, 5.5) < 1e-6 in 3
assert s == "ab" & g == 3 & _freq == 12 in 4
assert reldif(pc, 6.0) < 1e-6 in 4
assert s == "ab" & g == 4 & _freq == 11 in 5
assert reldif(pc, 5.5) < 1e-6 in 5
assert s == "ab" & g == 5 & _freq == 11 in 6
assert reldif(pc, 5.5) < 1e-6 in 6
assert s == "ab" & g == 6 & _freq == 12 in 7
assert reldif(pc, 6.0) < 1e-6 in 7
assert s == "b d" & g == 0 & _freq == 6 in 8
assert reldif(pc, 3.0) < 1e-6 in 8
assert s == "b d" & g == 1 & _freq == 5 in 9
assert reldif(pc, 2.5) < 1e-6 in 9
assert s == "b d" & g == 2 & _freq == 6 in 10
assert reldif(pc, 3.0) < 1e-6 in 10
assert s == "b d" & g == 3 & _freq == 6 in 11
assert reldif(pc, 3.0) < 1e-6 in 11
assert s == "b d" & g == 4 & _freq == 6 in 12
assert reldif(pc, 3.0) < 1e-6 in 12
assert s == "b d" & g == 5 & _freq == 6 in 13
assert reldif(pc, 3.0) < 1e-6 in 13
assert s == "b d" & g == 6 & _freq == 5 in 14
assert reldif(pc, 2.5) < 1e-6 in 14
assert s == "c" & g == 0 & _freq == 11 in 15
assert reldif(pc, 5.5) < 1e-6 in 15
assert s == "c" & g == 1 & _freq == 11 in 16
assert reldif(pc, 5.5) < 1e-6 in 16
assert s == "c" & g == 2 & _freq == 11 in 17
assert reldif(pc, 5.5) < 1e-6 in 17
assert s == "c" & g == 3 & _freq == 11 in 18
assert reldif(pc, 5.5) < 1e-6 in 18
assert s == "c" & g == 4 & _freq == 12 in 19
assert reldif(pc, 6.0) < 1e-6 in 19
assert s == "c" & g == 5 & _freq == 12 in 20
assert reldif(pc, 6.0) < 1e-6 in 20
assert s == "c" & g == 6 & _freq == 12 in 21
assert reldif(pc, 6.0) < 1e-6 in 21
display "test completed"
