* table and tabdisp: each cell against values worked out with pandas
* (groupby of a on b, worked by hand below for this small data).
drop _all
input a b x
1 1 10
1 2 20
2 1 30
2 2 40
1 1 15
2 2 45
1 1 12
2 1 .
end
* pandas: df.groupby(["a","b"]).x.agg(["size","mean","std","sum"])
*   (1,1): 3, 12.333333333333334, 2.5166114784235836, 37
*   (1,2): 1, 20, NaN, 20
*   (2,1): 2, 30, NaN, 30
*   (2,2): 2, 42.5, 3.5355339059327378, 85
table a b, contents(freq mean x sd x sum x n x) format(%20.15g)
display "test completed"
